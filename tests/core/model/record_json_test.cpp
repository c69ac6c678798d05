#include "core/model/record_json.h"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "tests/support/random_records.h"

namespace copperwick {
namespace {

namespace json = boost::json;

constexpr const char* kAccountID = "5A1F6C3E-2B4D-4E8F-9A0B-1C2D3E4F5A6B";
constexpr const char* kTransactionID = "0B3C9E2A-7D41-4F6E-8C5B-2A1D0E9F8C7B";

Uuid id(const char* text) {
    return *Uuid::parse(text);
}
LocalDate date(int y, int m, int d) {
    return *LocalDate::make(y, m, d);
}

// An imported, unfiled line: the smallest transaction a real file produces.
LedgerTransaction plainTransaction() {
    return LedgerTransaction{
        .id = id(kTransactionID),
        .accountID = id(kAccountID),
        .batchID = Uuid::random(),
        .sourceLine = 7,
        .date = date(2026, 3, 9),
        .amount = -1234,
        .currency = "USD",
        .rawDescription = "TRADER JOE'S #552 PORTLAND OR",
        .status = TransactionStatus::posted,
        .fingerprint = "2026-03-09|-1234|TRADER JOE'S #552 PORTLAND OR",
        .occurrence = 1,
    };
}

// Every optional field present, including the nested values.
LedgerTransaction fullTransaction() {
    LedgerTransaction t = plainTransaction();
    t.postedDate = date(2026, 3, 10);
    t.bankMerchant = "Trader Joe's";
    t.bankCategory = "Groceries";
    t.checkNumber = "1042";
    t.status = TransactionStatus::pending;
    t.kind = TransactionKind::expense;
    t.categoryID = Uuid::random();
    t.merchantID = Uuid::random();
    t.method = MatchMethod::learned;
    t.evidence = "You filed this merchant before.";
    t.review = ReviewState::suggested;
    t.suggestion = Suggestion{"Trader Joe's", Uuid::random(), TransactionKind::expense,
                              MatchMethod::ai, "Looks like groceries."};
    t.transferPairID = Uuid::random();
    t.supersededBy = Uuid::random();
    t.voided = true;
    t.note = "weekly shop \"big\" — with ünïcode";
    t.spendingAssignment = SpendingAssignment::person(Uuid::random());
    t.inheritedAssignment = SpendingAssignment::shared();
    t.cardIdentifier = "4421";
    t.entrySource = TransactionEntrySource::openingBalance;
    t.originalDetails = TransactionDetails{date(2026, 3, 8), -1200, "TRADER JOES"};
    t.revisions = std::vector<TransactionRevision>{{Uuid::random(),
                                                    Instant{795000000.25},
                                                    {date(2026, 3, 8), -1200, "A"},
                                                    {date(2026, 3, 9), -1234, "B"},
                                                    "typo"}};
    t.splits = std::vector<TransactionSplit>{{Uuid::random(), Uuid::random(), -1000, "food"},
                                             {Uuid::random(), Uuid::random(), -234, ""}};
    t.externalID = "FITID-99";
    return t;
}

json::object objectOf(const std::string& text) {
    return json::parse(text).as_object();
}

template <typename T>
Decoded<T> decodeObject(const json::object& object) {
    return record_json::decode<T>(json::serialize(object));
}

TEST(RecordJSON, TransactionRoundTripsByteForByte) {
    for (const auto& original : {plainTransaction(), fullTransaction()}) {
        const std::string first = record_json::encode(original);
        const auto decoded = record_json::decode<LedgerTransaction>(first);
        ASSERT_TRUE(decoded) << decoded.error;
        EXPECT_EQ(*decoded.value, original);
        EXPECT_EQ(record_json::encode(*decoded.value), first);
    }
}

TEST(RecordJSON, TransactionsAndChangeSetsAreWrittenAsTheirTreeSerialises) {
    // Written directly for speed; the tree is the reference, so stored rows
    // don't depend on which way a record took.
    std::mt19937 random(7);
    ChangeSet change{
        .id = Uuid::random(), .date = Instant{812345678.125}, .label = "Review \"A\"\n"};
    for (int i = 0; i < 2000; ++i) {
        LedgerTransaction t =
            i % 10 == 0 ? fullTransaction() : testing::randomFlatTransaction(random);
        if (i % 10 == 0)
            t.note = testing::awkwardText(random);
        EXPECT_EQ(record_json::encode(t), json::serialize(record_json::toJSON(t)));
        if (i % 100 == 0)
            change.before.push_back(t);
    }
    std::string control;
    for (int byte = 0; byte < 0x80; ++byte)
        control.push_back(static_cast<char>(byte));
    LedgerTransaction every = plainTransaction();
    every.rawDescription = control + "\xff\xfe";
    EXPECT_EQ(record_json::encode(every), json::serialize(record_json::toJSON(every)));
    change.before.push_back(every);
    change.merchantsBefore = {
        Merchant{Uuid::random(), "Acme", std::nullopt, TransactionKind::expense, {"ACME"}, true}};
    change.createdTransactionIDs = {Uuid::random()};
    EXPECT_EQ(record_json::encode(change), json::serialize(record_json::toJSON(change)));
    EXPECT_EQ(record_json::encode(ChangeSet{}), json::serialize(record_json::toJSON(ChangeSet{})));
}

TEST(RecordJSON, AbsentOptionalsLeaveNoKeyAndNeverNull) {
    const json::object plain = objectOf(record_json::encode(plainTransaction()));
    // The 16 required keys and the batch, nothing else.
    EXPECT_EQ(plain.size(), 17u);
    for (const auto& [key, value] : plain)
        EXPECT_FALSE(value.is_null()) << key;
    EXPECT_FALSE(plain.contains("postedDate"));
    EXPECT_FALSE(plain.contains("suggestion"));

    const json::object full = objectOf(record_json::encode(fullTransaction()));
    EXPECT_EQ(full.size(), 34u);
}

TEST(RecordJSON, EveryRequiredTransactionKeyIsEnforced) {
    const json::object plain = objectOf(record_json::encode(plainTransaction()));
    const std::vector<std::string> required{"id",          "accountID",  "sourceLine",     "date",
                                            "amount",      "currency",   "rawDescription", "status",
                                            "fingerprint", "occurrence", "kind",           "method",
                                            "evidence",    "review",     "voided",         "note"};
    for (const auto& key : required) {
        json::object missing = plain;
        missing.erase(key);
        const auto decoded = decodeObject<LedgerTransaction>(missing);
        EXPECT_FALSE(decoded) << "read without " << key;
        EXPECT_NE(decoded.error.find(key), std::string::npos) << decoded.error;

        json::object nulled = plain;
        nulled[key] = nullptr;
        EXPECT_FALSE(decodeObject<LedgerTransaction>(nulled)) << "read with null " << key;
    }
    json::object withoutBatch = plain;
    withoutBatch.erase("batchID");
    EXPECT_TRUE(decodeObject<LedgerTransaction>(withoutBatch));
}

TEST(RecordJSON, NullReadsAsAbsentAndUnknownKeysAreDropped) {
    json::object object = objectOf(record_json::encode(plainTransaction()));
    object["postedDate"] = nullptr;
    object["mood"] = "cheerful";
    const auto decoded = decodeObject<LedgerTransaction>(object);
    ASSERT_TRUE(decoded) << decoded.error;
    EXPECT_FALSE(decoded.value->postedDate);
    EXPECT_FALSE(objectOf(record_json::encode(*decoded.value)).contains("mood"));
}

TEST(RecordJSON, WrongTypesAndUnknownEnumerationsMakeTheRecordUnreadable) {
    const json::object plain = objectOf(record_json::encode(plainTransaction()));
    const std::vector<std::pair<std::string, json::value>> bad{
        {"kind", "loan"},        {"status", "Posted"},   {"amount", "-12.34"},
        {"amount", -12.34},      {"voided", 0},          {"sourceLine", true},
        {"date", "2026-02-30"},  {"date", "03/09/2026"}, {"id", "not-a-uuid"},
        {"note", json::array{}}, {"batchID", 42},        {"amount", 18446744073709551615ull},
    };
    for (const auto& [key, value] : bad) {
        json::object object = plain;
        object[key] = value;
        EXPECT_FALSE(decodeObject<LedgerTransaction>(object))
            << key << " = " << json::serialize(value);
    }
    EXPECT_FALSE(record_json::decode<LedgerTransaction>("{\"id\": "));
    EXPECT_FALSE(record_json::decode<LedgerTransaction>("[]"));
}

TEST(RecordJSON, InvalidDateNamesTheText) {
    json::object object = objectOf(record_json::encode(plainTransaction()));
    object["date"] = "2026-02-30";
    const auto decoded = decodeObject<LedgerTransaction>(object);
    EXPECT_NE(decoded.error.find("Invalid date 2026-02-30"), std::string::npos) << decoded.error;
}

TEST(RecordJSON, UUIDsAreWrittenUpperCaseAndReadInAnyCase) {
    json::object object = objectOf(record_json::encode(plainTransaction()));
    EXPECT_EQ(object["accountID"].as_string(), kAccountID);
    object["accountID"] = "5a1f6c3e-2b4d-4e8f-9a0b-1c2d3e4f5a6b";
    const auto decoded = decodeObject<LedgerTransaction>(object);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded.value->accountID, id(kAccountID));
    EXPECT_EQ(objectOf(record_json::encode(*decoded.value))["accountID"].as_string(), kAccountID);
}

TEST(RecordJSON, InstantsAreSecondsSince2001) {
    Rule rule{.id = Uuid::random(), .name = "Rent", .pattern = "RENT"};
    rule.createdAt = Instant::fromUnixSeconds(978307200.0 + 86400.5);
    json::object object = objectOf(record_json::encode(rule));
    EXPECT_DOUBLE_EQ(object["createdAt"].to_number<double>(), 86400.5);

    object["createdAt"] = 60;  // integral seconds are still an instant
    const auto decoded = decodeObject<Rule>(object);
    ASSERT_TRUE(decoded) << decoded.error;
    EXPECT_EQ(decoded.value->createdAt.secondsSinceReference, 60.0);
}

TEST(RecordJSON, SpendingAssignmentHasOneKeyPerCase) {
    const auto person = id(kAccountID);
    EXPECT_EQ(json::serialize(record_json::toJSON(SpendingAssignment::person(person))),
              std::string("{\"person\":{\"_0\":\"") + kAccountID + "\"}}");
    EXPECT_EQ(json::serialize(record_json::toJSON(SpendingAssignment::shared())),
              "{\"shared\":{}}");
    EXPECT_EQ(json::serialize(record_json::toJSON(SpendingAssignment::unassigned())),
              "{\"unassigned\":{}}");

    const auto read = record_json::decode<SpendingAssignment>(
        R"({"person":{"_0":"5a1f6c3e-2b4d-4e8f-9a0b-1c2d3e4f5a6b"}})");
    ASSERT_TRUE(read);
    EXPECT_EQ(*read.value, SpendingAssignment::person(person));

    for (const char* bad : {R"({"shared":{},"unassigned":{}})", R"({})", R"({"everyone":{}})",
                            R"({"person":{}})", R"({"shared":true})", R"("shared")"}) {
        EXPECT_FALSE(record_json::decode<SpendingAssignment>(bad)) << bad;
    }
}

TEST(RecordJSON, AccountReadsOldFilesWithDefaults) {
    const auto bare = record_json::decode<Account>(std::string(R"({"id":")") + kAccountID +
                                                   R"(","name":"Checking","type":"checking"})");
    ASSERT_TRUE(bare) << bare.error;
    EXPECT_EQ(bare.value->currency, "USD");
    EXPECT_TRUE(bare.value->userIDs().empty());
    EXPECT_FALSE(bare.value->personID());
    EXPECT_TRUE(bare.value->cardAssignments.empty());
    EXPECT_FALSE(bare.value->flipSigns || bare.value->isArchived || bare.value->rarelyUsed ||
                 bare.value->isUnassigned);

    // Files from before shared accounts name only the one person.
    const auto person = Uuid::random();
    const auto old = record_json::decode<Account>(
        std::string(R"({"id":")") + kAccountID +
        R"(","name":"Card","type":"creditCard","personID":")" + person.text() + "\"}");
    ASSERT_TRUE(old) << old.error;
    EXPECT_EQ(old.value->userIDs(), std::vector<Uuid>{person});

    Account shared = *old.value;
    shared.cardAssignments.emplace("4421", SpendingAssignment::person(person));
    shared.setUserIDs({person, Uuid::random()});
    const auto reread = record_json::decode<Account>(record_json::encode(shared));
    ASSERT_TRUE(reread) << reread.error;
    EXPECT_EQ(*reread.value, shared);
    EXPECT_FALSE(reread.value->personID());
}

TEST(RecordJSON, EmptySettingsObjectGivesTheDefaults) {
    const auto settings = record_json::decode<LedgerSettings>("{}");
    ASSERT_TRUE(settings) << settings.error;
    EXPECT_EQ(settings.value->timeZoneID, "America/Los_Angeles");
    EXPECT_TRUE(settings.value->keepSourceText);
    EXPECT_EQ(settings.value->reportCurrency, "USD");
    EXPECT_EQ(settings.value->paymentServices, std::vector<PaymentService>{PaymentService::zelle});
    EXPECT_FALSE(settings.value->monthlySavingsGoal);

    EXPECT_FALSE(
        record_json::decode<LedgerSettings>(R"({"paymentServices":["zelle","carrierPigeon"]})"));
    const auto tracked =
        record_json::decode<LedgerSettings>(R"({"paymentServices":["venmo","appleCash"]})");
    ASSERT_TRUE(tracked);
    EXPECT_EQ(tracked.value->paymentServices,
              (std::vector<PaymentService>{PaymentService::venmo, PaymentService::appleCash}));
}

TEST(RecordJSON, ChangeSetDefaultsItsArraysAndNestsWholeTransactions) {
    const auto bare = record_json::decode<ChangeSet>(std::string(R"({"id":")") + kAccountID +
                                                     R"(","date":12.5,"label":"Undo Filing"})");
    ASSERT_TRUE(bare) << bare.error;
    EXPECT_TRUE(bare.value->before.empty() && bare.value->merchantsBefore.empty() &&
                bare.value->createdMerchantIDs.empty() && bare.value->createdRuleIDs.empty() &&
                bare.value->createdAIFilingKeys.empty() && bare.value->aiFilingsBefore.empty() &&
                bare.value->createdTransactionIDs.empty());

    ChangeSet change{.id = Uuid::random(), .date = Instant{1.0}, .label = "Undo Import"};
    change.before = {fullTransaction(), plainTransaction()};
    change.merchantsBefore = {
        Merchant{Uuid::random(), "Acme", std::nullopt, TransactionKind::expense, {"ACME"}, true}};
    change.aiFilingsBefore = {AIFiling{"ACME", "Acme", std::nullopt, TransactionKind::expense,
                                       "why", Instant{2.0}, true}};
    change.createdAIFilingKeys = {"ACME"};
    const auto decoded = record_json::decode<ChangeSet>(record_json::encode(change));
    ASSERT_TRUE(decoded) << decoded.error;
    EXPECT_EQ(*decoded.value, change);

    // One unreadable snapshot spoils the whole change record.
    json::object object = objectOf(record_json::encode(change));
    object["before"].as_array()[1].as_object()["kind"] = "loan";
    EXPECT_FALSE(decodeObject<ChangeSet>(object));
}

TEST(RecordJSON, EveryOtherRecordRoundTrips) {
    const auto check = [](const auto& record) {
        using T = std::decay_t<decltype(record)>;
        const auto text = record_json::encode(record);
        const auto decoded = record_json::decode<T>(text);
        ASSERT_TRUE(decoded) << decoded.error << " in " << text;
        EXPECT_EQ(*decoded.value, record) << text;
        EXPECT_EQ(record_json::encode(*decoded.value), text);
    };
    check(Person{Uuid::random(), "Dana", {"DANA R SMITH", "D SMITH"}, 25000});
    check(Person{Uuid::random(), "Sam", {}, std::nullopt});
    check(LedgerCategory{Uuid::random(), "Dining", CategoryGroup::expense, 3});
    check(Merchant{Uuid::random(),
                   "Blue Bottle",
                   Uuid::random(),
                   std::nullopt,
                   {"BLUE BOTTLE", "BLUEBOTTLE"},
                   false});
    check(AIFiling{"KEY", std::nullopt, Uuid::random(), TransactionKind::income, "r", Instant{3.75},
                   false});
    check(Rule{Uuid::random(),
               "Coffee",
               false,
               TextMatch::regex,
               "^BLUE\\s",
               {Uuid::random()},
               AmountDirection::moneyOut,
               100,
               90'000'000'000'000,
               "Blue Bottle",
               TransactionKind::expense,
               Uuid::random(),
               Instant{4.0}});
    check(ImportBatch{Uuid::random(), "march.csv", "ab12", Uuid::random(), "chase-card",
                      Instant{5.0}, ImportCounts{10, 7, 1, 1, 0, 0, 1, 0}, date(2026, 3, 1),
                      date(2026, 3, 31)});
    check(Budget{Uuid::random(), Uuid::random(), 40000});
    LedgerSettings settings;
    settings.timeZoneID = "Europe/Berlin";
    settings.keepSourceText = false;
    settings.disabledBuiltInRules = {"atm"};
    settings.ruleOrder = {Uuid::random()};
    settings.dismissedNotes = {"gap:x"};
    settings.paymentServices = {};
    settings.monthlySavingsGoal = 50000;
    settings.monthlySavingsGoalCurrency = "EUR";
    check(settings);
    ImportProfile profile{
        .id = "custom-1", .name = "My bank", .dateColumn = "Date", .descriptionColumn = "Memo"};
    profile.accountType = AccountType::creditCard;
    profile.requiredHeaders = {"Date", "Memo", "Amount"};
    profile.amountColumn = "Amount";
    profile.signConvention = SignConvention::positiveIsMoneyOut;
    profile.dateLayout = DateLayout::dayMonthYear;
    profile.fileNameHints = std::vector<std::string>{"export"};
    check(profile);
    check(DateSpan(date(2026, 1, 1), date(2026, 3, 31)));
}

TEST(RecordJSON, ProfileNeedsItsRequiredKeys) {
    ImportProfile profile{
        .id = "custom-1", .name = "My bank", .dateColumn = "Date", .descriptionColumn = "Memo"};
    const json::object object = objectOf(record_json::encode(profile));
    for (const char* key : {"id", "name", "hasHeader", "requiredHeaders", "forbiddenHeaders",
                            "headerlessColumns", "headerlessShape", "dateColumn",
                            "descriptionColumn", "signConvention", "pendingValues", "isBuiltIn"}) {
        json::object missing = object;
        missing.erase(key);
        EXPECT_FALSE(decodeObject<ImportProfile>(missing)) << key;
    }
}

// Profiles stored before the number style was kept have none of its keys and
// must read as they always did; profiles with them must keep them.
TEST(RecordJSON, ProfileNumberStyleAndMarkersAreOptional) {
    ImportProfile profile{
        .id = "custom-1", .name = "My bank", .dateColumn = "Date", .descriptionColumn = "Memo"};
    profile.amountColumn = "Umsatz";
    const std::string plain = record_json::encode(profile);
    for (const char* key : {"numberStyle", "signMarkerColumn", "moneyOutMarkers"})
        EXPECT_EQ(plain.find(key), std::string::npos) << key;
    const auto old = record_json::decode<ImportProfile>(plain);
    ASSERT_TRUE(old) << old.error;
    EXPECT_EQ(*old.value, profile);

    profile.numberStyle = NumberStyle::decimalComma;
    profile.signMarkerColumn = "S/H";
    profile.moneyOutMarkers = std::vector<std::string>{"S", "Soll"};
    const std::string text = record_json::encode(profile);
    const auto decoded = record_json::decode<ImportProfile>(text);
    ASSERT_TRUE(decoded) << decoded.error;
    EXPECT_EQ(*decoded.value, profile);
    EXPECT_EQ(record_json::encode(*decoded.value), text);

    json::object unknown = objectOf(text);
    unknown["numberStyle"] = "commaAndPoint";
    EXPECT_FALSE(decodeObject<ImportProfile>(unknown));
}

TEST(RecordJSON, StoredSpansAreNotResorted) {
    const auto span = record_json::decode<DateSpan>(R"({"start":"2026-03-31","end":"2026-03-01"})");
    ASSERT_TRUE(span);
    EXPECT_EQ(span.value->start, date(2026, 3, 31));
    EXPECT_EQ(span.value->end, date(2026, 3, 1));
}

}  // namespace
}  // namespace copperwick
