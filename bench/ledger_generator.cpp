#include "bench/ledger_generator.h"

#include <array>
#include <random>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "core/model/household_resolution.h"

namespace copperwick::bench {

namespace {

constexpr std::array<const char*, 24> kMerchantStems{
    "TRADER JOE'S", "SAFEWAY",         "WHOLE FOODS", "COSTCO WHSE",
    "TARGET",       "AMAZON MKTPLACE", "SHELL OIL",   "CHEVRON",
    "STARBUCKS",    "BLUE BOTTLE",     "CHIPOTLE",    "NETFLIX.COM",
    "SPOTIFY USA",  "PG&E WEB ONLINE", "COMCAST",     "WALGREENS",
    "CVS/PHARMACY", "HOME DEPOT",      "UBER TRIP",   "LYFT RIDE",
    "DELTA AIR",    "MARRIOTT",        "PETCO",       "REI",
};
constexpr std::array<const char*, 8> kCities{"PORTLAND OR", "SEATTLE WA", "OAKLAND CA",
                                             "AUSTIN TX",   "DENVER CO",  "BOISE ID",
                                             "RENO NV",     "TUCSON AZ"};

Uuid nextID(std::mt19937_64& random) {
    std::array<uint8_t, 16> bytes{};
    for (std::size_t i = 0; i < bytes.size(); i += 8) {
        const uint64_t word = random();
        for (std::size_t j = 0; j < 8; ++j)
            bytes[i + j] = static_cast<uint8_t>(word >> (8 * j));
    }
    bytes[6] = static_cast<uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<uint8_t>((bytes[8] & 0x3F) | 0x80);
    return Uuid(bytes);
}

}  // namespace

Ledger generateLedger(const GeneratorOptions& options) {
    std::mt19937_64 random(options.seed);
    Ledger ledger;
    auto categories = LedgerCategory::defaults();
    for (auto& category : categories)
        category.id = nextID(random);
    ledger.categories = SharedVector<LedgerCategory>(categories);

    std::vector<Uuid> people;
    for (const char* name : {"Dana", "Sam", "Riley"}) {
        const Person person{nextID(random), name, {fmt::format("{} SMITH", name)}};
        people.push_back(person.id);
        ledger.people.push_back(person);
    }
    std::vector<Uuid> accounts;
    const std::array<std::pair<const char*, AccountType>, 6> accountShapes{
        {{"Joint Checking", AccountType::checking},
         {"Savings", AccountType::savings},
         {"Dana's Card", AccountType::creditCard},
         {"Sam's Card", AccountType::creditCard},
         {"Store Card", AccountType::creditCard},
         {"Wallet", AccountType::cash}}};
    for (std::size_t i = 0; i < accountShapes.size(); ++i) {
        Account account(nextID(random), accountShapes[i].first, accountShapes[i].second,
                        people[i % people.size()]);
        if (i == 0)
            account.setUserIDs(people);
        accounts.push_back(account.id);
        ledger.accounts.push_back(account);
    }

    std::vector<Uuid> merchants;
    for (const char* stem : kMerchantStems) {
        Merchant merchant{
            nextID(random), stem, categories[random() % 19].id, TransactionKind::expense, {stem}};
        merchants.push_back(merchant.id);
        ledger.merchants.set(merchant.id, merchant);
    }

    for (std::size_t i = 0; i < 4; ++i) {
        Rule rule{.id = nextID(random),
                  .name = fmt::format("Rule {}", i + 1),
                  .pattern = kMerchantStems[i * 5]};
        rule.categoryID = categories[i].id;
        rule.createdAt = Instant{700'000'000.0 + static_cast<double>(i)};
        ledger.rules.push_back(rule);
    }

    const LocalDate first = *LocalDate::make(2026 - options.years, 1, 1);
    const int64_t days = options.years * 365;
    // One import file a month per account, roughly.
    std::vector<Uuid> batches;
    for (int month = 0; month < options.years * 12; ++month) {
        const ImportBatch batch{
            .id = nextID(random),
            .fileName = fmt::format("export-{:03}.csv", month),
            .fileHash = fmt::format("{:016x}", random()),
            .accountID = accounts[static_cast<std::size_t>(month) % accounts.size()],
            .profileID = "chase-card",
            .importedAt = Instant{600'000'000.0 + month * 2'592'000.0}};
        batches.push_back(batch.id);
        ledger.batches.push_back(batch);
    }
    ledger.transactions.reserve(options.transactions);
    // As an import stores every line: whose spending its account makes it.
    std::vector<SpendingAssignment> inherited;
    for (const Account& account : ledger.accounts)
        inherited.push_back(defaultAssignment(account));
    const auto inheritedBy = [&](const Uuid& account) {
        for (std::size_t a = 0; a < accounts.size(); ++a) {
            if (accounts[a] == account)
                return inherited[a];
        }
        return SpendingAssignment::unassigned();
    };
    const auto addLine = [&](std::size_t line, const Uuid& account, LocalDate date, int64_t amount,
                             const std::string& description) {
        LedgerTransaction t{
            .id = nextID(random),
            .accountID = account,
            .batchID = batches[random() % batches.size()],
            .sourceLine = static_cast<int64_t>(line + 2),
            .date = date,
            .amount = amount,
            .rawDescription = description,
            .fingerprint = fmt::format("{}|{}|{}", date.iso(), amount, description)};
        t.inheritedAssignment = inheritedBy(account);
        ledger.transactions.set(t.id, t);
    };
    for (std::size_t i = 0; i < options.transactions; ++i) {
        // Every 25th line starts a move between the household's own
        // accounts: a card payment or a transfer to savings, both sides.
        if (i % 25 == 0 && i + 1 < options.transactions) {
            const bool cardPayment = random() % 2 == 0;
            const int64_t amount = static_cast<int64_t>(1'000 + random() % 200'000);
            const auto date =
                first.addingDays(static_cast<int64_t>(random() % static_cast<uint64_t>(days)));
            const auto reference = random() % 10'000;
            addLine(i, accounts[0], date, -amount,
                    cardPayment ? fmt::format("CHASE CREDIT CRD AUTOPAY {:06}", reference * 37)
                                : fmt::format("ONLINE TRANSFER TO SAV XXXXXX{:04}", reference));
            addLine(i + 1, cardPayment ? accounts[2] : accounts[1],
                    date.addingDays(static_cast<int64_t>(random() % 3)), amount,
                    cardPayment ? std::string("PAYMENT THANK YOU")
                                : fmt::format("ONLINE TRANSFER FROM CHK XXXXXX{:04}", reference));
            ++i;
            continue;
        }
        const std::size_t stem = random() % kMerchantStems.size();
        const auto date =
            first.addingDays(static_cast<int64_t>(random() % static_cast<uint64_t>(days)));
        const int64_t amount = -static_cast<int64_t>(100 + random() % 25'000);
        const std::string description =
            fmt::format("{} #{:04} {}", kMerchantStems[stem], random() % 9000 + 100,
                        kCities[random() % kCities.size()]);
        LedgerTransaction t{.id = nextID(random),
                            .accountID = accounts[random() % accounts.size()],
                            .batchID = batches[random() % batches.size()],
                            .sourceLine = static_cast<int64_t>(i + 2),
                            .date = date,
                            .amount = amount,
                            .currency = "USD",
                            .rawDescription = description,
                            .status = TransactionStatus::posted,
                            .fingerprint = fmt::format("{}|{}|{}", date.iso(), amount, description),
                            .occurrence = 1};
        t.inheritedAssignment = inheritedBy(t.accountID);
        // A few bank lines arrive with the card's own merchant and category.
        if (random() % 8 == 0) {
            t.bankMerchant = kMerchantStems[stem];
            t.bankCategory = "Merchandise";
        }
        if (random() % 4 != 0) {
            t.kind = TransactionKind::expense;
            t.merchantID = merchants[stem];
            t.categoryID = ledger.merchant(merchants[stem])->categoryID;
            t.method = MatchMethod::learned;
            t.evidence = "You filed this merchant before.";
            t.review = ReviewState::automatic;
        } else {
            t.evidence = fmt::format("Merchant {} from the bank text; no category yet.",
                                     kMerchantStems[stem]);
        }
        ledger.transactions.set(t.id, t);
    }

    // A short undo history, each step holding snapshots as real ones do.
    std::vector<const LedgerTransaction*> some;
    for (const auto& t : ledger.transactions) {
        if (some.size() == 200)
            break;
        some.push_back(&t);
    }
    for (std::size_t step = 0; step < 10 && !some.empty(); ++step) {
        ChangeSet change{.id = nextID(random),
                         .date = Instant{800'000'000.0 + static_cast<double>(step)},
                         .label = "Undo Filing"};
        for (std::size_t j = step * 20; j < std::min(some.size(), step * 20 + 20); ++j)
            change.before.push_back(*some[j]);
        ledger.changes.push_back(change);
    }
    return ledger;
}

}  // namespace copperwick::bench
