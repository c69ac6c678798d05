// Updates end to end against a feed served on this computer: what is
// offered, what is thrown away, and when an install may happen at all.

#include "runtime/updates/update_controller.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "runtime/import_model.h"
#include "runtime/intelligence_controller.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/model_test_support.h"
#include "tests/support/process.h"
#include "tests/support/temp_folder.h"
#include "tests/support/update_feed_server.h"

namespace copperwick {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::FeedItem;
using testing::feedXML;
using testing::ManualAlarmClock;
using testing::TempFolder;

constexpr auto kRetry =
    std::chrono::duration_cast<std::chrono::milliseconds>(UpdateInstallPolicy::retryInterval);

class UpdateTest : public ::testing::Test {
  protected:
    UpdateTest() { openRuntime(); }

    void openRuntime(bool demo = false) {
        runtime = std::make_unique<LedgerRuntime>(
            RuntimeOptions{.demo = demo,
                           .dataFolder = demo ? std::nullopt : std::optional(folder / "Copperwick"),
                           .preferencesFolder = folder / "config"});
        // Tests check when they mean to; those about automatic checks turn
        // them back on.
        runtime->defaults().set(preference_keys::automaticallyChecksForUpdates, false);
    }

    [[nodiscard]] UpdateConfiguration configuration() const {
        return testing::configurationFor(server, key);
    }

    // Makes the controller as the application would, with a person who
    // answers `install` when asked and an installer that only notes what
    // it was told to run.
    UpdateController& makeController(std::optional<UpdateConfiguration> setUp = std::nullopt) {
        UpdateHooks hooks;
        hooks.clock = clock;
        hooks.askToInstall = [this](const std::string& question, std::function<void(bool)> answer) {
            questions.push_back(question);
            answer(install);
        };
        hooks.installer.hasProgram = [this](std::string_view program) {
            return program == "xdg-open" || hasPackageManager;
        };
        hooks.installer.run = [this](const std::vector<std::string>& command) {
            commands.push_back(command);
            installedBytes = testing::readFile(command.back());
            return 0;
        };
        controller = std::make_unique<UpdateController>(*runtime, setUp.value_or(configuration()),
                                                        std::move(hooks));
        return *controller;
    }

    // A package for `version` on the server, signed by the test's key.
    FeedItem publish(const std::string& version, const std::string& bytes) {
        const std::string path = "/packages/copperwick_" + version + "_amd64.deb";
        server.serve(path, bytes);
        return {.version = version,
                .url = server.url(path),
                .length = bytes.size(),
                .signature = key.sign(bytes)};
    }

    // Runs what comes back from the checks until nothing is under way.
    void settle() {
        runtime->mainQueue()->runUntil([this] { return !controller->isBusy(); });
    }

    [[nodiscard]] fs::path updatesFolder() const { return folder / "Copperwick Updates"; }
    [[nodiscard]] std::vector<std::string> keptFiles() const {
        std::vector<std::string> names;
        std::error_code ignored;
        for (const auto& entry : fs::directory_iterator(updatesFolder(), ignored))
            names.push_back(entry.path().filename().string());
        return names;
    }
    [[nodiscard]] std::string error() const { return runtime->errorMessage().value_or(""); }
    [[nodiscard]] std::string status() const { return runtime->statusMessage().value_or(""); }

    TempFolder folder;
    testing::UpdateFeedServer server;
    testing::TestSigningKey key;
    std::shared_ptr<ManualAlarmClock> clock = std::make_shared<ManualAlarmClock>();
    std::unique_ptr<LedgerRuntime> runtime;
    std::unique_ptr<UpdateController> controller;
    bool install = true;
    bool hasPackageManager = true;
    std::vector<std::string> questions;
    std::vector<std::vector<std::string>> commands;
    std::string installedBytes;
};

const std::string kPackage = "!<arch>\ndebian-binary   a package of a newer Copperwick\n";

TEST_F(UpdateTest, AGoodSignedVersionIsDownloadedVerifiedOfferedAndHandedToTheInstaller) {
    server.serveFeed(feedXML({publish("0.9.0", "old"), publish("1.1.0", kPackage)}));
    makeController().start();
    controller->checkNow();
    settle();

    const fs::path kept = updatesFolder() / "copperwick-1.1.0.deb";
    EXPECT_EQ(questions, std::vector<std::string>{"Copperwick 1.1.0 is ready to install."});
    ASSERT_EQ(commands.size(), 1u);
    EXPECT_EQ(commands[0],
              (std::vector<std::string>{"pkexec", "apt-get", "install", "-y", kept.string()}));
    EXPECT_EQ(installedBytes, kPackage);
    EXPECT_EQ(keptFiles(), std::vector<std::string>{"copperwick-1.1.0.deb"});
    EXPECT_EQ(status(),
              "Copperwick 1.1.0 is installed. It starts the next time you open "
              "Copperwick.");
    EXPECT_EQ(error(), "");
    ASSERT_TRUE(controller->lastCheckDate());
    EXPECT_EQ(runtime->defaults().stringValue(preference_keys::lastUpdateCheckDate).has_value(),
              true);
    EXPECT_EQ(server.requestsFor("/packages/copperwick_0.9.0_amd64.deb"), 0);
}

TEST_F(UpdateTest, WithoutPkexecThePackageOpensInTheDesktopsInstaller) {
    hasPackageManager = false;
    server.serveFeed(feedXML({publish("1.1.0", kPackage)}));
    makeController().start();
    controller->checkNow();
    settle();
    ASSERT_EQ(commands.size(), 1u);
    EXPECT_EQ(commands[0], (std::vector<std::string>{
                               "xdg-open", (updatesFolder() / "copperwick-1.1.0.deb").string()}));
    EXPECT_EQ(status(), "Copperwick 1.1.0 is open in your software installer.");
}

TEST_F(UpdateTest, APackageThatDoesntMatchItsSignatureOrLengthIsDiscardedAndNeverOffered) {
    std::string tampered = kPackage;
    tampered[12] ^= 0x01;
    const testing::TestSigningKey stranger;
    struct Case {
        const char* story;
        FeedItem item;
    };
    FeedItem oneByteChanged = publish("1.1.0", kPackage);
    server.serve("/packages/copperwick_1.1.0_amd64.deb", tampered);
    FeedItem otherKey = publish("1.2.0", kPackage);
    otherKey.signature = stranger.sign(kPackage);
    FeedItem longer = publish("1.3.0", kPackage);
    longer.length += 1;
    FeedItem shorter = publish("1.4.0", kPackage);
    shorter.length -= 1;
    FeedItem garbled = publish("1.5.0", kPackage);
    garbled.signature = "bm90IGEgc2lnbmF0dXJl";
    for (const Case& each :
         {Case{"one byte changed", oneByteChanged}, Case{"signed by another key", otherKey},
          Case{"shorter than the feed says", longer}, Case{"longer than the feed says", shorter},
          Case{"a signature of the wrong size", garbled}}) {
        SCOPED_TRACE(each.story);
        runtime->setErrorMessage(std::nullopt);
        server.serveFeed(feedXML({each.item}));
        makeController().start();
        controller->checkNow();
        settle();
        EXPECT_EQ(error(), UpdateText::kDiscarded);
        EXPECT_TRUE(questions.empty());
        EXPECT_TRUE(commands.empty());
        EXPECT_TRUE(keptFiles().empty()) << keptFiles().front();
        EXPECT_FALSE(controller->heldBy());
    }
}

TEST_F(UpdateTest, AChangedPackageIsNeverHandedToTheInstaller) {
    // Downloaded and verified, then changed on the disk while the install
    // waited for the person's answer.
    server.serveFeed(feedXML({publish("1.1.0", kPackage)}));
    UpdateHooks hooks;
    std::function<void(bool)> later;
    hooks.clock = clock;
    hooks.askToInstall = [&](const std::string&, std::function<void(bool)> answer) {
        later = std::move(answer);
    };
    hooks.installer.run = [&](const std::vector<std::string>& command) {
        commands.push_back(command);
        return 0;
    };
    controller = std::make_unique<UpdateController>(*runtime, configuration(), std::move(hooks));
    controller->start();
    controller->checkNow();
    settle();
    ASSERT_TRUE(later);
    testing::writeFile(updatesFolder() / "copperwick-1.1.0.deb", kPackage + "#!/bin/sh\n");
    later(true);
    settle();
    EXPECT_TRUE(commands.empty());
    EXPECT_EQ(error(), UpdateText::kDiscarded);
    EXPECT_TRUE(keptFiles().empty());
}

TEST_F(UpdateTest, TheSameOrAnOlderVersionIsNeverOffered) {
    server.serveFeed(feedXML(
        {publish("0.9.0", kPackage), publish("1.0.0", kPackage), publish("1.0", kPackage)}));
    makeController().start();
    controller->checkNow();
    settle();
    EXPECT_EQ(status(), UpdateControllerText::kUpToDate);
    EXPECT_EQ(server.requests(), std::vector<std::string>{"/appcast.xml"})
        << "a package was fetched";
    EXPECT_TRUE(questions.empty());
}

TEST_F(UpdateTest, AFeedThatNeverAnswersTimesOutAndTheNextCheckStillWorks) {
    server.hangFeed();
    UpdateConfiguration quick = configuration();
    quick.feedTimeLimit = 300ms;
    makeController(quick).start();
    const auto started = std::chrono::steady_clock::now();
    controller->checkNow();
    settle();
    EXPECT_LT(std::chrono::steady_clock::now() - started, 5s);
    EXPECT_EQ(error(), UpdateText::kTimedOut);
    EXPECT_FALSE(controller->isBusy());

    server.hangFeed(false);
    server.serveFeed(feedXML({}));
    controller->checkNow();
    settle();
    EXPECT_EQ(status(), UpdateControllerText::kUpToDate);
}

TEST_F(UpdateTest, AFeedThatIsntXMLIsSaidInPlainWords) {
    for (const std::string& feed :
         {std::string("<html><body>Page not found</body></html>"), std::string("\x89PNG\r\n")}) {
        runtime->setErrorMessage(std::nullopt);
        server.serveFeed(feed);
        makeController().start();
        controller->checkNow();
        settle();
        EXPECT_EQ(error(), UpdateText::kUnreadable) << feed;
    }
    UpdateConfiguration missing = configuration();
    missing.feed = server.url("/missing.xml");
    makeController(missing).start();
    controller->checkNow();
    settle();
    EXPECT_EQ(error(), UpdateText::kServerError);
}

TEST_F(UpdateTest, ABackgroundCheckOnlySaysWhatItFoundUnlessDownloadsAreOn) {
    server.serveFeed(feedXML({publish("1.1.0", kPackage)}));
    runtime->defaults().set(preference_keys::automaticallyChecksForUpdates, true);
    makeController().start();
    settle();
    EXPECT_EQ(controller->progressText(), "Copperwick 1.1.0 is available. Check Now downloads it.");
    EXPECT_EQ(server.requestsFor("/packages/copperwick_1.1.0_amd64.deb"), 0);
    EXPECT_EQ(status(), "");

    // With downloads on, the next day's check fetches it and offers it.
    controller->setAutomaticallyInstalls(true);
    EXPECT_EQ(runtime->defaults().boolValue(preference_keys::automaticallyDownloadsUpdates), true);
    clock->advance(UpdateController::kCheckInterval);
    settle();
    EXPECT_EQ(questions, std::vector<std::string>{"Copperwick 1.1.0 is ready to install."});
}

TEST_F(UpdateTest, AnUnreachableServerIsQuietInTheBackgroundAndSaidWhenAsked) {
    UpdateConfiguration nowhere = configuration();
    // The discard port, which nothing on a test machine listens on.
    nowhere.feed = "http://127.0.0.1:9/appcast.xml";
    runtime->defaults().set(preference_keys::automaticallyChecksForUpdates, true);
    makeController(nowhere).start();
    settle();
    EXPECT_EQ(error(), "");
    controller->checkNow();
    settle();
    EXPECT_EQ(error(), UpdateText::kUnreachable);
}

TEST_F(UpdateTest, ChecksAtStartOnceAndThenOnceADay) {
    server.serveFeed(feedXML({}));
    runtime->defaults().set(preference_keys::automaticallyChecksForUpdates, true);
    makeController();
    controller->start();
    controller->start();
    settle();
    EXPECT_EQ(server.requestsFor("/appcast.xml"), 1) << "a second start built a second updater";
    EXPECT_TRUE(controller->canCheckForUpdates());
    EXPECT_TRUE(controller->automaticallyChecks());
    EXPECT_FALSE(controller->automaticallyInstalls());

    clock->advance(UpdateController::kCheckInterval - 1s);
    EXPECT_FALSE(controller->isBusy());
    clock->advance(1s);
    settle();
    EXPECT_EQ(server.requestsFor("/appcast.xml"), 2);

    controller->setAutomaticallyChecks(false);
    EXPECT_EQ(runtime->defaults().boolValue(preference_keys::automaticallyChecksForUpdates), false);
    clock->advance(UpdateController::kCheckInterval * 3);
    EXPECT_EQ(server.requestsFor("/appcast.xml"), 2);
    EXPECT_EQ(status(), "") << "a check nobody asked for says nothing";
}

TEST_F(UpdateTest, ADemoNeverBuildsTheUpdater) {
    server.serveFeed(feedXML({publish("1.1.0", kPackage)}));
    openRuntime(true);
    makeController();
    controller->start();
    controller->checkNow();
    controller->setAutomaticallyInstalls(true);
    EXPECT_FALSE(controller->isStarted());
    EXPECT_FALSE(controller->canCheckForUpdates());
    EXPECT_FALSE(controller->automaticallyChecks());
    EXPECT_FALSE(controller->automaticallyInstalls());
    EXPECT_EQ(controller->lastCheckDate(), std::nullopt);
    EXPECT_TRUE(server.requests().empty());
    EXPECT_EQ(runtime->defaults().boolValue(preference_keys::automaticallyDownloadsUpdates),
              std::nullopt);
}

TEST_F(UpdateTest, ABuildWithoutAFeedAndKeyLeavesUpdatesToThePackageManager) {
    for (const UpdateConfiguration& off :
         {UpdateConfiguration{.runningVersion = "1.0.0"},
          UpdateConfiguration{.feed = server.feedURL(), .runningVersion = "1.0.0"},
          UpdateConfiguration{
              .feed = server.feedURL(), .publicKey = "c2hvcnQ=", .runningVersion = "1.0.0"},
          UpdateConfiguration{.feed = "http://updates.example.com/appcast.xml",
          .publicKey = key.publicKey(),
          .runningVersion = "1.0.0"}}) {
        makeController(off);
        EXPECT_FALSE(controller->isConfigured()) << off.feed << " " << off.publicKey;
        controller->start();
        controller->checkNow();
        EXPECT_FALSE(controller->canCheckForUpdates());
        EXPECT_FALSE(controller->isBusy());
    }
    EXPECT_TRUE(server.requests().empty());
    EXPECT_TRUE(makeController().isConfigured());
}

TEST_F(UpdateTest, SayingLaterKeepsThePackageAndTheNextCheckOffersItWithoutDownloading) {
    install = false;
    server.serveFeed(feedXML({publish("1.1.0", kPackage)}));
    makeController().start();
    controller->checkNow();
    settle();
    EXPECT_EQ(questions.size(), 1u);
    EXPECT_TRUE(commands.empty());
    install = true;
    controller->checkNow();
    settle();
    EXPECT_EQ(questions.size(), 2u);
    EXPECT_EQ(commands.size(), 1u);
    EXPECT_EQ(server.requestsFor("/packages/copperwick_1.1.0_amd64.deb"), 1);
}

TEST_F(UpdateTest, ANewerVersionReplacesTheOlderPackage) {
    install = false;
    server.serveFeed(feedXML({publish("1.1.0", kPackage)}));
    makeController().start();
    controller->checkNow();
    settle();
    server.serveFeed(feedXML({publish("1.1.0", kPackage), publish("1.2.0", kPackage + "2")}));
    controller->checkNow();
    settle();
    EXPECT_EQ(keptFiles(), std::vector<std::string>{"copperwick-1.2.0.deb"});
    EXPECT_EQ(questions.back(), "Copperwick 1.2.0 is ready to install.");
}

TEST_F(UpdateTest, TheSigningToolsLineIsAFeedItemThatVerifies) {
    const fs::path keyFile = folder / "signing.key";
    const fs::path package = folder / "copperwick_1.1.0_amd64.deb";
    testing::writeFile(package, kPackage);
    const auto made = testing::runProcess(
        {COPPERWICK_SIGN_UPDATE, "generate-key", keyFile.string()}, folder.path());
    ASSERT_EQ(made.code, 0) << made.err;
    EXPECT_EQ(fs::status(keyFile).permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write);
    const auto again = testing::runProcess(
        {COPPERWICK_SIGN_UPDATE, "generate-key", keyFile.string()}, folder.path());
    EXPECT_NE(again.code, 0) << "a signing key was written over";
    const auto publicKey = testing::runProcess(
        {COPPERWICK_SIGN_UPDATE, "public-key", keyFile.string()}, folder.path());
    ASSERT_EQ(publicKey.code, 0) << publicKey.err;
    EXPECT_NE(made.out.find("Public key: " + publicKey.out), std::string::npos) << made.out;

    server.serve("/copperwick_1.1.0_amd64.deb", kPackage);
    const auto signedLine =
        testing::runProcess({COPPERWICK_SIGN_UPDATE, "sign", keyFile.string(), package.string(),
                             "1.1.0", server.url("/copperwick_1.1.0_amd64.deb")},
                            folder.path());
    ASSERT_EQ(signedLine.code, 0) << signedLine.err;
    server.serveFeed(
        "<rss version=\"2.0\" "
        "xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel><item>" +
        signedLine.out + "</item></channel></rss>");
    UpdateConfiguration signedBy = configuration();
    signedBy.publicKey = publicKey.out.substr(0, publicKey.out.find('\n'));
    makeController(signedBy).start();
    controller->checkNow();
    settle();
    EXPECT_EQ(error(), "");
    EXPECT_EQ(installedBytes, kPackage);
}

// The wait for an idle program, on a clock the test winds.
class InstallWaitTest : public UpdateTest {
  protected:
    InstallWaitTest() { makeController().start(); }

    // Offers an install that counts its calls in `calls`.
    void offer(int& calls) {
        controller->installWhenIdle([&calls] { ++calls; });
    }
};

TEST(UpdateInstallPolicy, AnyOneActivityAloneHoldsTheInstallBack) {
    using Flag = bool UpdateActivity::*;
    for (const Flag flag :
         {&UpdateActivity::isImporting, &UpdateActivity::isBuildingReport,
          &UpdateActivity::isBuildingPDF, &UpdateActivity::isFilingWithAppleIntelligence,
          &UpdateActivity::isTidyingMerchants}) {
        UpdateActivity activity;
        activity.*flag = true;
        EXPECT_FALSE(UpdateInstallPolicy::canInstallNow(activity));
    }
    EXPECT_TRUE(UpdateInstallPolicy::canInstallNow(UpdateActivity{}));
    EXPECT_EQ(UpdateInstallPolicy::retryInterval, 15s);
    EXPECT_EQ(busyWords(UpdateActivity{.isImporting = true,
                                       .isFilingWithAppleIntelligence = true,
                                       .isTidyingMerchants = true}),
              "importing or editing an entry, filing with Local AI and tidying merchant names");
    EXPECT_EQ(busyWords(UpdateActivity{.isBuildingPDF = true}), "making a PDF");
}

TEST_F(InstallWaitTest, AnEntryEditorLeftOpenHoldsTheInstallBackUntilItCloses) {
    int calls = 0;
    runtime->setEntryEditorCount(1);
    offer(calls);
    EXPECT_EQ(controller->heldBy(), UpdateActivity{.isImporting = true});
    clock->advance(kRetry * 40);
    EXPECT_EQ(calls, 0) << "nothing is being imported, but a half-written entry is open";
    runtime->setEntryEditorCount(0);
    clock->advance(kRetry - 1ms);
    EXPECT_EQ(calls, 0) << "the wait looks again only when its interval is over";
    clock->advance(1ms);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(controller->heldBy(), std::nullopt);
    clock->advance(kRetry * 4);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(clock->waiting(), 0u);
}

TEST_F(InstallWaitTest, WhatTheRuntimeSeesOfTheImporterLocalAIAndPDFsHoldsItBack) {
    {
        SCOPED_TRACE("a PDF being made");
        int calls = 0;
        std::optional<ActivityCount> pdf(runtime->countPDFBuild());
        offer(calls);
        EXPECT_EQ(controller->heldBy(), UpdateActivity{.isBuildingPDF = true});
        pdf.reset();
        clock->advance(kRetry);
        EXPECT_EQ(calls, 1);
    }
    {
        SCOPED_TRACE("a file being read by the importer");
        ImportModel importer;
        runtime->setActivitySources(&importer, nullptr);
        const fs::path file = folder / "bank.csv";
        testing::writeFile(file, "Date,Description,Amount\n2026-03-01,COFFEE,-4.50\n");
        importer.add({file}, *runtime);
        int calls = 0;
        offer(calls);
        EXPECT_EQ(controller->heldBy(), UpdateActivity{.isImporting = true});
        importer.waitForAnalyses(*runtime);
        clock->advance(kRetry);
        EXPECT_EQ(calls, 1);
        runtime->setActivitySources(nullptr, nullptr);
    }
    {
        SCOPED_TRACE("Local AI filing transactions");
        IntelligenceController intelligence(*runtime, testing::quickLimits());
        runtime->setActivitySources(nullptr, &intelligence);
        runtime->apply([](Ledger& ledger) {
            LedgerDelta delta;
            const Account card(Uuid::random(), "Visa", AccountType::creditCard);
            ledger.accounts.push_back(card);
            LedgerTransaction line{.id = Uuid::random(),
                                   .accountID = card.id,
                                   .date = testing::day(2026, 3, 1),
                                   .amount = -450,
                                   .rawDescription = "JOES DINER"};
            ledger.transactions.set(line.id, line);
            delta.change(RecordKind::account, card.id);
            delta.change(RecordKind::transaction, line.id);
            return delta;
        });
        intelligence.start(IntelligenceController::groupsToLookAt(runtime->ledger()));
        ASSERT_TRUE(intelligence.isFilingTransactions());
        int calls = 0;
        offer(calls);
        EXPECT_EQ(controller->heldBy(), UpdateActivity{.isFilingWithAppleIntelligence = true});
        intelligence.cancel();
        intelligence.wait();
        clock->advance(kRetry);
        EXPECT_EQ(calls, 1);
        runtime->setActivitySources(nullptr, nullptr);
    }
}

TEST_F(InstallWaitTest, ASecondOfferWhileWaitingReplacesTheFirstWhichIsNeverCalled) {
    int first = 0;
    int second = 0;
    runtime->setEntryEditorCount(1);
    offer(first);
    clock->advance(kRetry);
    offer(second);
    EXPECT_EQ(clock->waiting(), 1u) << "the first wait went on beside the second";
    runtime->setEntryEditorCount(0);
    clock->advance(kRetry * 3);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);
}

TEST_F(InstallWaitTest, WithTheRuntimeGoneNothingHoldsTheInstallBack) {
    int waiting = 0;
    runtime->setEntryEditorCount(1);
    offer(waiting);
    runtime.reset();
    clock->advance(kRetry);
    EXPECT_EQ(waiting, 1) << "the wait kept reading a runtime that was gone";
    int later = 0;
    offer(later);
    EXPECT_EQ(later, 1) << "an offer after the runtime went wasn't installed at once";
}

TEST_F(InstallWaitTest, ADownloadedVersionSaysWhatItWaitsFor) {
    server.serveFeed(feedXML({publish("1.1.0", kPackage)}));
    runtime->setEntryEditorCount(1);
    std::optional<ActivityCount> pdf(runtime->countPDFBuild());
    controller->checkNow();
    settle();
    EXPECT_EQ(controller->progressText(),
              "Copperwick 1.1.0 is ready and waits until Copperwick is done importing or editing "
              "an entry and making a PDF.");
    EXPECT_TRUE(questions.empty());
    runtime->setEntryEditorCount(0);
    pdf.reset();
    clock->advance(kRetry);
    EXPECT_EQ(questions, std::vector<std::string>{"Copperwick 1.1.0 is ready to install."});
    settle();
    EXPECT_EQ(controller->progressText(), std::nullopt);
}

}  // namespace
}  // namespace copperwick
