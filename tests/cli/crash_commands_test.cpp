// Mutating commands killed at every moment that matters, and run two at a
// time on one data folder. After a kill the folder must open and pass
// SQLite's check, hold exactly the ledger from before the command or after
// it, and list only whole backups. Two commands at once must leave what one
// of the two serial orders leaves.
//
// States are compared by ledger_digest, which describes a ledger by its
// names, dates, amounts and filings, so that separate runs that drew other
// ids and clocks compare equal.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "core/store/ledger_store.h"
#include "tests/support/card_statement.h"
#include "tests/support/process.h"
#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

namespace fs = std::filesystem;
using testing::Process;
using testing::ProcessResult;
using testing::runProcess;
using testing::TempFolder;

// Random kills per command, on top of one at each durable call.
int randomKills() {
    if (const char* value = std::getenv("COPPERWICK_CRASH_KILLS"))
        return std::atoi(value);
    return 12;
}

struct Command {
    std::string name;
    std::vector<std::string> arguments;  // after --data-dir FOLDER
};

class Folders {
  public:
    // A household after one import and one filing: every command below has
    // something to act on.
    Folders() {
        const auto base = this->base();
        must({"import", std::string(COPPERWICK_SAMPLES) + "/chase-checking.csv"});
        const auto review = boost::json::parse(must({"--json", "review"}).out);
        const auto& groups = review.at("groups").as_array();
        EXPECT_GE(groups.size(), 2u);
        must({"classify", "--ids", idsOf(groups.at(0)), "--category", "Groceries"});
        m_laterGroup = idsOf(groups.at(1));
        const auto imports = boost::json::parse(must({"--json", "imports"}).out);
        m_batch = std::string(imports.as_array().at(0).at("id").as_string());
        const auto accounts = boost::json::parse(must({"--json", "accounts"}).out);
        m_account = std::string(accounts.as_array().at(0).at("name").as_string());
        // The copy from before the import: restoring it changes everything.
        for (const auto& entry : fs::directory_iterator(base / "Backups")) {
            if (entry.path().filename().string().ends_with("-before-import.sqlite"))
                m_backup = entry.path().filename().string();
        }
        EXPECT_FALSE(m_backup.empty());
        m_before = digest(base);
        writeLongStatement();
    }

    [[nodiscard]] fs::path base() const { return m_temp / "base"; }
    [[nodiscard]] const std::string& before() const { return m_before; }

    [[nodiscard]] std::vector<Command> commands() const {
        return {
            {"import", {"import", std::string(COPPERWICK_SAMPLES) + "/chase-card.csv"}},
            // Long enough to be written straight into the file.
            {"import-long", {"import", longStatement().string()}},
            {"classify", {"classify", "--ids", m_laterGroup, "--category", "Dining"}},
            {"add",
             {"add", "--account", m_account, "--date", "2026-10-28", "--amount", "-12.34",
              "--description", "Corner shop", "--category", "Groceries"}},
            {"undo", {"undo"}},
            {"undo-import", {"undo-import", m_batch}},
            {"restore", {"backup", "restore", m_backup}},
        };
    }

    // A fresh copy of the base folder.
    [[nodiscard]] fs::path copy() {
        const fs::path folder = m_temp / ("run-" + std::to_string(m_copies++));
        fs::copy(base(), folder, fs::copy_options::recursive);
        return folder;
    }

    static ProcessResult run(const fs::path& folder, const std::vector<std::string>& arguments,
                             const std::map<std::string, std::string>& environment = {}) {
        std::vector<std::string> argv{COPPERWICK_EXECUTABLE, "--data-dir", folder.string()};
        argv.insert(argv.end(), arguments.begin(), arguments.end());
        return runProcess(argv, folder.parent_path(), {.environment = environment});
    }

    // The ledger's description, or what is wrong with the folder.
    static std::string digest(const fs::path& folder) {
        const auto result =
            runProcess({COPPERWICK_LEDGER_DIGEST, folder.string()}, folder.parent_path());
        std::string text = result.out;
        if (result.code != 0)
            text = "FAILED (" + std::to_string(result.code) + "): " + text;
        return text;
    }

    // Every copy the folder lists must be whole.
    static std::string unsoundBackups(const fs::path& folder) {
        std::string unsound;
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(folder / "Backups", error)) {
            const auto name = entry.path().filename().string();
            if (name.starts_with("Copperwick-") && name.ends_with(".sqlite") &&
                !LedgerStore::verify(entry.path())) {
                unsound += name + " ";
            }
        }
        return unsound;
    }

  private:
    [[nodiscard]] fs::path longStatement() const { return m_temp / "long-card.csv"; }

    // A card statement of a few thousand lines, in the sample's layout.
    void writeLongStatement() const {
        std::vector<std::tuple<std::string, std::string, std::string>> lines;
        for (std::size_t i = 0; i < LedgerStore::kDirectWriteLines + 500; ++i) {
            lines.emplace_back(
                std::to_string(1 + (i / 28) % 12) + "/" + std::to_string(1 + i % 28) + "/2025",
                "CORNER MARKET " + std::to_string(i % 300),
                "-" + std::to_string(1 + i % 90) + "." + std::to_string(10 + i % 89));
        }
        testing::writeFile(longStatement(), testing::cardStatement(lines));
    }

    static std::string idsOf(const boost::json::value& group) {
        std::string ids;
        for (const auto& id : group.at("transactionIDs").as_array())
            ids += (ids.empty() ? "" : ",") + std::string(id.as_string());
        return ids;
    }

    ProcessResult must(const std::vector<std::string>& arguments) {
        auto result = run(base(), arguments);
        EXPECT_EQ(result.code, 0) << arguments.front() << result.err;
        return result;
    }

    TempFolder m_temp;
    int m_copies = 0;
    std::string m_laterGroup;
    std::string m_batch;
    std::string m_account;
    std::string m_backup;
    std::string m_before;
};

std::map<std::string, std::string> preloaded(std::map<std::string, std::string> environment) {
    environment["LD_PRELOAD"] = COPPERWICK_KILL_AT_CALL;
    // The sanitizers' runtime wants to come first; the shim only counts calls.
    environment["ASAN_OPTIONS"] = "verify_asan_link_order=0:detect_leaks=0";
    return environment;
}

TEST(CrashCommands, KilledAtAnyMomentLeaveTheLedgerBeforeOrAfter) {
    // A kill during a restore left no data file, or an empty one, 6 times in
    // 430; a kill during a safety backup left a truncated copy that `backup
    // list` showed as the newest.
    Folders folders;
    std::mt19937 random(20261123);
    for (const auto& command : folders.commands()) {
        SCOPED_TRACE(command.name);
        // A clean run: the state after, and how many durable calls it makes.
        const fs::path clean = folders.copy();
        const fs::path countFile = clean.parent_path() / (command.name + ".count");
        const auto started = std::chrono::steady_clock::now();
        const auto ran = Folders::run(clean, command.arguments,
                                      preloaded({{"COPPERWICK_COUNT_FILE", countFile.string()}}));
        const auto took = std::chrono::steady_clock::now() - started;
        ASSERT_EQ(ran.code, 0) << ran.err;
        const std::string after = Folders::digest(clean);
        ASSERT_NE(after, folders.before()) << "the command changed nothing";
        const long calls = std::stol(testing::readFile(countFile));
        ASSERT_GT(calls, 0);

        const auto check = [&](const fs::path& folder, const std::string& when) {
            const std::string state = Folders::digest(folder);
            EXPECT_TRUE(state == folders.before() || state == after)
                << when << " left:\n"
                << state << "\nbefore:\n"
                << folders.before() << "\nafter:\n"
                << after;
            EXPECT_EQ(Folders::unsoundBackups(folder), "") << when;
            // And it opens for the next command.
            const auto info = Folders::run(folder, {"info"});
            EXPECT_EQ(info.code, 0) << when << ": " << info.err;
        };
        for (long call = 1; call <= calls; ++call) {
            const fs::path folder = folders.copy();
            const auto killed =
                Folders::run(folder, command.arguments,
                             preloaded({{"COPPERWICK_KILL_AT", std::to_string(call)}}));
            check(folder,
                  "kill at durable call " + std::to_string(call) + " of " + std::to_string(calls));
            if (::testing::Test::HasFailure())
                return;
        }
        const auto span = std::chrono::duration_cast<std::chrono::microseconds>(took).count();
        for (int kill = 0; kill < randomKills(); ++kill) {
            const fs::path folder = folders.copy();
            std::vector<std::string> argv{COPPERWICK_EXECUTABLE, "--data-dir", folder.string()};
            argv.insert(argv.end(), command.arguments.begin(), command.arguments.end());
            Process process(argv, folder.parent_path());
            const auto delay = std::chrono::microseconds(random() % (span + 1));
            std::this_thread::sleep_for(delay);
            process.kill();
            (void)process.wait();
            check(folder, "kill after " + std::to_string(delay.count()) + " µs");
            if (::testing::Test::HasFailure())
                return;
        }
    }
}

TEST(ConcurrentCommands, TwoAtOnceLeaveWhatOneOfTheSerialOrdersLeaves) {
    // The same file imported twice at once gave 3,000 duplicates, and an
    // import during a restore said it imported lines that were in no file.
    Folders folders;
    const auto commands = folders.commands();
    std::mt19937 random(20261124);
    const auto serial = [&](const Command& first, const Command& second) {
        const fs::path folder = folders.copy();
        (void)Folders::run(folder, first.arguments);
        (void)Folders::run(folder, second.arguments);
        return Folders::digest(folder);
    };
    for (std::size_t i = 0; i < commands.size(); ++i) {
        for (std::size_t j = i; j < commands.size(); ++j) {
            const auto& a = commands[i];
            const auto& b = commands[j];
            SCOPED_TRACE(a.name + " beside " + b.name);
            const std::string ab = serial(a, b);
            const std::string ba = serial(b, a);
            for (int round = 0; round < 3; ++round) {
                const fs::path folder = folders.copy();
                const auto argv = [&](const Command& command) {
                    std::vector<std::string> v{COPPERWICK_EXECUTABLE, "--data-dir",
                                               folder.string()};
                    v.insert(v.end(), command.arguments.begin(), command.arguments.end());
                    return v;
                };
                Process first(argv(a), folder.parent_path());
                std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
                Process second(argv(b), folder.parent_path());
                const auto one = first.wait();
                const auto other = second.wait();
                if (a.name == "import" && b.name == "import") {
                    // The one that came second says so, as it would have run alone.
                    const int imported = (one.out.starts_with("Imported") ? 1 : 0) +
                                         (other.out.starts_with("Imported") ? 1 : 0);
                    EXPECT_EQ(imported, 1) << one.out << other.out;
                }
                const std::string state = Folders::digest(folder);
                EXPECT_TRUE(state == ab || state == ba) << "left:\n"
                                                        << state << "\n"
                                                        << a.name << " then " << b.name << ":\n"
                                                        << ab << "\n"
                                                        << b.name << " then " << a.name << ":\n"
                                                        << ba;
                if (::testing::Test::HasFailure())
                    return;
            }
        }
    }
}

TEST(ConcurrentCommands, ANewFolderOpenedByManyAtOnceGetsOneStarterLedger) {
    // Two imports started at once on a new folder: one said "Copperwick
    // couldn't open its data file: database is locked".
    TempFolder temp;
    for (int round = 0; round < 5; ++round) {
        const fs::path folder = temp / ("new-" + std::to_string(round));
        std::vector<std::unique_ptr<Process>> processes;
        for (int i = 0; i < 4; ++i) {
            processes.push_back(std::make_unique<Process>(
                std::vector<std::string>{COPPERWICK_EXECUTABLE, "--data-dir", folder.string(),
                                         "--json", "info"},
                temp.path()));
        }
        for (auto& process : processes) {
            const auto result = process->wait(std::chrono::seconds(60));
            ASSERT_EQ(result.code, 0) << result.err;
        }
        const auto info = Folders::run(folder, {"--json", "info"});
        ASSERT_EQ(info.code, 0) << info.err;
        EXPECT_EQ(boost::json::parse(info.out).at("counts").at("category").as_int64(), 23)
            << "starter categories made more than once";
        std::error_code none;
        for (const auto& entry : fs::directory_iterator(folder / "Backups", none)) {
            EXPECT_FALSE(entry.path().filename().string().ends_with("before-format-2.sqlite"))
                << "a new file taken for one of an older format";
        }
    }
}

}  // namespace
}  // namespace copperwick
