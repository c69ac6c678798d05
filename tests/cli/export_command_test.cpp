#include <stdlib.h>
#include <sys/stat.h>

#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "tests/support/process.h"
#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

using testing::TempFolder;

class ExportCommandTest : public ::testing::Test {
  protected:
    testing::CommandResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data-dir", (folder / "data").string()});
        return testing::runCommand(arguments);
    }

    TempFolder folder;
};

// `export transactions /dev/full` as root replaced the device with a regular
// file; the same rename went over pipes and symbolic links, and a folder was
// answered with "Couldn't save the file: Success".
TEST_F(ExportCommandTest, OnlyARegularFileOrANewNameIsWritten) {
    const auto pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const auto kept = folder / "kept.csv";
    testing::writeFile(kept, "mine");
    const auto link = folder / "link.csv";
    std::filesystem::create_symlink(kept, link);
    const auto box = folder / "box";
    std::filesystem::create_directory(box);

    for (const auto& [target, reason] : std::vector<std::pair<std::filesystem::path, std::string>>{
             {pipe, " isn't a regular file."},
             {link, " isn't a regular file."},
             {box, " is a folder, not a file."}}) {
        for (const char* kind : {"transactions", "summary"}) {
            const auto result = run({"export", kind, target.string()});
            EXPECT_EQ(result.code, 1) << kind;
            EXPECT_EQ(result.err, "Couldn't save the file: " + target.string() + reason + "\n");
        }
    }
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(testing::readFile(kept), "mine");
    EXPECT_TRUE(std::filesystem::is_empty(box));

    // A new file is private: it holds someone's finances.
    const auto saved = run({"export", "transactions", (folder / "new.csv").string()});
    ASSERT_EQ(saved.code, 0) << saved.err;
    struct stat status {};
    ASSERT_EQ(::stat((folder / "new.csv").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    EXPECT_EQ(run({"export", "summary", kept.string()}).code, 0);
    EXPECT_NE(testing::readFile(kept), "mine");
}

// The PDF command reads the person's preferences; here they live in a
// folder of the test's own.
class ExportPDFTest : public ExportCommandTest {
  protected:
    void SetUp() override {
        if (const char* before = ::getenv("XDG_CONFIG_HOME"))
            m_before = before;
        ::setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
    }
    void TearDown() override {
        if (m_before)
            ::setenv("XDG_CONFIG_HOME", m_before->c_str(), 1);
        else
            ::unsetenv("XDG_CONFIG_HOME");
    }
    void prefer(const std::string& json) {
        std::filesystem::create_directories(folder / "config" / "Copperwick");
        testing::writeFile(folder / "config" / "Copperwick" / "preferences.json", json);
    }
    // The style the PDF's subject ("{scope} · {style}") names, as poppler
    // reads it.
    std::string styleOf(const std::filesystem::path& file) {
        const auto info = testing::runProcess({"/usr/bin/pdfinfo", file.string()}, folder.path());
        const auto subject = info.out.find("Subject:");
        if (info.code != 0 || subject == std::string::npos)
            return "(unreadable)";
        const auto end = info.out.find('\n', subject);
        const std::string line = info.out.substr(subject, end - subject);
        return line.substr(line.rfind(' ') + 1);
    }

  private:
    std::optional<std::string> m_before;
};

TEST_F(ExportPDFTest, SavesTheReportAndSaysHowManyPages) {
    const auto file = folder / "March report.pdf";
    const auto result = run({"export", "pdf", file.string(), "--from", "2026-03-01", "--to",
                             "2026-03-31", "--style", "everyday", "--skin", "bordeaux"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "Saved March report.pdf\n");
    EXPECT_EQ(testing::readFile(file).substr(0, 5), "%PDF-");
    struct stat status {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u) << "it holds someone's finances";

    const auto json = run({"--json", "export", "pdf", (folder / "again.pdf").string()});
    ASSERT_EQ(json.code, 0) << json.err;
    const auto saved = boost::json::parse(json.out).as_object();
    EXPECT_EQ(saved.at("file").as_string(), (folder / "again.pdf").string());
    EXPECT_EQ(saved.at("message").as_string(), "Saved again.pdf");
    EXPECT_EQ(saved.at("pages").as_int64(), 3) << "overview, categories, income and details";
}

TEST_F(ExportPDFTest, TheStyleLastChosenOnScreenIsTheDefault) {
    if (!std::filesystem::exists("/usr/bin/pdfinfo"))
        GTEST_SKIP() << "poppler-utils isn't installed";
    const auto plain = folder / "plain.pdf";
    ASSERT_EQ(run({"export", "pdf", plain.string()}).code, 0);
    EXPECT_EQ(styleOf(plain), "signature");

    prefer(R"({"Copperwick.pdfReportStyle": "precision"})");
    const auto preferred = folder / "preferred.pdf";
    ASSERT_EQ(run({"export", "pdf", preferred.string()}).code, 0);
    EXPECT_EQ(styleOf(preferred), "precision");

    const auto named = folder / "named.pdf";
    ASSERT_EQ(run({"export", "pdf", named.string(), "--style", "everyday"}).code, 0);
    EXPECT_EQ(styleOf(named), "everyday");

    prefer(R"({"Copperwick.pdfReportStyle": "glossy"})");
    const auto unknown = folder / "unknown.pdf";
    ASSERT_EQ(run({"export", "pdf", unknown.string()}).code, 0);
    EXPECT_EQ(styleOf(unknown), "signature");
}

TEST_F(ExportPDFTest, APlaceThatCantBeWrittenIsSaidInPlainWords) {
    const auto result = run({"export", "pdf", (folder / "missing" / "report.pdf").string()});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err,
              "Couldn't save the PDF: The PDF file couldn't be created at that location.\n");
    EXPECT_EQ(result.out, "");
    EXPECT_FALSE(std::filesystem::exists(folder / "missing"));

    EXPECT_EQ(run({"export", "pdf", (folder / "x.pdf").string(), "--style", "fancy"}).code, 2);
    EXPECT_EQ(run({"export", "pdf", (folder / "x.pdf").string(), "--skin", "ocean"}).code, 2);
    EXPECT_FALSE(std::filesystem::exists(folder / "x.pdf"));
}

// The program itself opens its PDF writer beside it, and only for a PDF: a
// command that never draws or connects doesn't load Pango, Cairo or libcurl.
TEST_F(ExportPDFTest, TheProgramOpensItsWriterOnlyWhenAskedForAPDF) {
    const auto loaded = testing::runCopperwick({"--version"}, folder.path(),
                                               {.environment = {{"LD_TRACE_LOADED_OBJECTS", "1"}}});
    ASSERT_EQ(loaded.code, 0) << loaded.err;
    EXPECT_NE(loaded.out.find("libsqlite3"), std::string::npos) << loaded.out;
    for (const char* library : {"libcairo", "libpango", "libcurl"})
        EXPECT_EQ(loaded.out.find(library), std::string::npos) << library << " in\n" << loaded.out;

    const auto data = (folder / "data").string();
    const auto file = folder / "process.pdf";
    const auto saved = testing::runCopperwick(
        {"--data-dir", data, "--json", "export", "pdf", file.string()}, folder.path());
    ASSERT_EQ(saved.code, 0) << saved.err;
    EXPECT_EQ(boost::json::parse(saved.out).at("pages").as_int64(), 3);
    EXPECT_EQ(testing::readFile(file).substr(0, 5), "%PDF-");
}

}  // namespace
}  // namespace copperwick::cli
