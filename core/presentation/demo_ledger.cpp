#include "core/presentation/demo_ledger.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "core/matching/merchant_keys.h"
#include "core/model/date_text.h"
#include "core/model/household_resolution.h"
#include "core/model/money.h"
#include "core/operations/manual_entry.h"
#include "core/operations/merchants.h"
#include "core/operations/record_maintenance.h"
#include "core/operations/set_budget.h"
#include "core/operations/transaction_correction.h"
#include "core/operations/upsert_account.h"

namespace copperwick::DemoLedger {

namespace {

constexpr std::string_view kNote = "Fictional demo transaction.";
constexpr int kMonths = 14;

// One line as a filing would have left it. The category and merchant are
// named; the merchant is found or made on the way in.
struct Row {
    Uuid account;
    LocalDate date;
    int64_t amount = 0;
    std::string raw;
    std::string category;  // empty: none
    std::string merchant;  // empty: none
    TransactionKind kind = TransactionKind::expense;
    MatchMethod method = MatchMethod::directory;
    ReviewState review = ReviewState::automatic;
    std::string note = std::string(kNote);
    std::optional<std::string> card;
    TransactionStatus status = TransactionStatus::posted;
    std::optional<Suggestion> suggestion;
    std::string evidence;  // empty: the words the method's own filing leaves
};

// Amounts and days that move from month to month without looking random: a
// base plus a remainder that steps by `stride` each month and never passes
// `spread`. Nothing here may depend on anything but the month index.
int64_t varying(int month, int64_t base, int64_t spread, int64_t stride) {
    return base + (int64_t{month} * stride) % (spread + 1);
}

// Days 2 to 27: every month has them, and a transfer's credit a day later
// still falls inside the month.
int dayIn(int month, int stride, int offset) {
    return 2 + (month * stride + offset) % 26;
}

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

class Household {
  public:
    explicit Household(LocalDate today)
        : m_today(today),
          m_start(today.firstOfMonth().addingMonths(-(kMonths - 1))),
          m_now(Instant::fromUnixSeconds(static_cast<double>(today.dayNumber()) * 86400.0)),
          m_ledger(Ledger::starter()) {}

    Ledger make() {
        addPeopleAndAccounts();
        for (int month = 0; month < kMonths; ++month)
            addMonth(month);
        addPlantedSamples();
        addCash();
        addCorrection();
        addBudgets();
        addBatches();
        return std::move(m_ledger);
    }

  private:
    // Day `day` of the loop's month `month`, or the month's last day when it
    // is shorter.
    [[nodiscard]] LocalDate on(int month, int day) const {
        const LocalDate first = m_start.addingMonths(month);
        const int last = LocalDate::daysInMonth(first.year, first.month);
        return LocalDate{first.year, first.month, std::min(day, last)};
    }
    [[nodiscard]] int calendarMonth(int month) const { return m_start.addingMonths(month).month; }

    [[nodiscard]] std::string nextFingerprint(LocalDate date, int64_t amount) {
        return "demo:" + date.iso() + "|" + std::to_string(amount) + "|" +
               std::to_string(++m_serial);
    }

    [[nodiscard]] Uuid categoryID(std::string_view name) const {
        const LedgerCategory* category = m_ledger.categoryNamed(name);
        assert(category && "the demo names only default categories");
        return category->id;
    }

    // A merchant the demo names once and finds again by name; a learned one
    // also carries its filing and the key it was taught, as a person's
    // remembered decision leaves it.
    std::optional<Uuid> merchantFor(const Row& row, const std::optional<Uuid>& category) {
        if (row.merchant.empty())
            return std::nullopt;
        const bool learned = row.method == MatchMethod::learned;
        const std::string key = MerchantKeys::of(row.raw);
        if (const Merchant* known = m_ledger.merchantNamed(row.merchant)) {
            if (!learned ||
                std::find(known->keys.begin(), known->keys.end(), key) != known->keys.end())
                return known->id;
            Merchant taught = *known;
            taught.keys.push_back(key);
            (void)updateMerchant(m_ledger, taught, false);
            return taught.id;
        }
        Merchant merchant{.id = Uuid::random(), .name = row.merchant};
        if (learned) {
            merchant.categoryID = category;
            merchant.kind = row.kind;
            merchant.keys.push_back(key);
        }
        (void)updateMerchant(m_ledger, merchant, false);
        return merchant.id;
    }

    [[nodiscard]] static std::string evidenceFor(const Row& row) {
        if (!row.evidence.empty())
            return row.evidence;
        const std::string refund = row.kind == TransactionKind::expense && row.amount > 0
                                       ? ". Money in, so it counts as a refund"
                                       : "";
        switch (row.method) {
            case MatchMethod::directory:
                return "Built-in merchant list: " + row.merchant + refund + ".";
            case MatchMethod::learned:
                return "Learned: you filed " + row.merchant + " this way before" + refund + ".";
            case MatchMethod::manual:
                return "Set by you.";
            default:
                return "";
        }
    }

    Uuid add(Row row) {
        std::optional<Uuid> category;
        if (!row.category.empty())
            category = categoryID(row.category);
        LedgerTransaction transaction{.id = Uuid::random(),
                                      .accountID = row.account,
                                      .date = row.date,
                                      .amount = row.amount,
                                      .rawDescription = row.raw,
                                      .status = row.status,
                                      .fingerprint = nextFingerprint(row.date, row.amount)};
        transaction.kind = row.kind;
        transaction.categoryID = category;
        transaction.merchantID = merchantFor(row, category);
        transaction.method = row.method;
        transaction.evidence = evidenceFor(row);
        transaction.review = row.review;
        transaction.suggestion = std::move(row.suggestion);
        transaction.note = std::move(row.note);
        transaction.inheritedAssignment = defaultAssignment(m_ledger, row.account, row.card);
        transaction.cardIdentifier = std::move(row.card);
        m_ledger.transactions.set(transaction.id, transaction);
        return transaction.id;
    }

    // Both sides of money moved between two of the household's accounts, the
    // credit a day after the debit, linked as transfer pairing links them.
    void transfer(const Uuid& from, const Uuid& to, LocalDate date, int64_t cents,
                  const std::string& text) {
        const LocalDate arrives = date.addingDays(1);
        const auto matches = [&](int64_t amount, const Uuid& account, LocalDate day) {
            return fmt::format("Matches {} in {} on {}.",
                               Money::format(amount, "USD", false, false),
                               m_ledger.account(account)->name, DateText::shortText(day));
        };
        const auto side = [&](const Uuid& account, LocalDate day, int64_t amount,
                              std::string evidence) {
            return add({.account = account,
                        .date = day,
                        .amount = amount,
                        .raw = text,
                        .kind = TransactionKind::transfer,
                        .method = MatchMethod::transferPair,
                        .evidence = std::move(evidence)});
        };
        const Uuid debit = side(from, date, -cents, matches(cents, to, arrives));
        const Uuid credit = side(to, arrives, cents, matches(-cents, from, date));
        m_ledger.transactions.update(
            debit, [&](LedgerTransaction& transaction) { transaction.transferPairID = credit; });
        m_ledger.transactions.update(
            credit, [&](LedgerTransaction& transaction) { transaction.transferPairID = debit; });
    }

    // Entries made through the manual operations get a random "manual:"
    // fingerprint and no note; the demo's rows all read "demo:" and must come
    // out alike on every run, so they are renamed in an order of their own.
    void markMade(const LedgerDelta& delta) {
        const auto found = delta.changed.find(RecordKind::transaction);
        if (found == delta.changed.end())
            return;
        std::vector<LedgerTransaction> made;
        for (const auto& id : found->second) {
            const LedgerTransaction* transaction = m_ledger.transaction(id.uuid());
            if (transaction && startsWith(transaction->fingerprint, "manual:"))
                made.push_back(*transaction);
        }
        std::sort(made.begin(), made.end(), [](const auto& a, const auto& b) {
            return std::tie(a.date, a.amount) < std::tie(b.date, b.amount);
        });
        for (auto& transaction : made) {
            transaction.fingerprint = nextFingerprint(transaction.date, transaction.amount);
            if (transaction.note.empty())
                transaction.note = std::string(kNote);
            m_ledger.transactions.set(transaction.id, transaction);
        }
    }

    Uuid account(std::string name, AccountType type, std::vector<Uuid> users) {
        Account added(Uuid::random(), std::move(name), type);
        added.setUserIDs(std::move(users));
        (void)upsertAccount(m_ledger, added);
        return added.id;
    }

    void addPeopleAndAccounts() {
        const auto person = [&](std::string name) {
            const Person added{.id = Uuid::random(), .name = std::move(name)};
            (void)upsertPerson(m_ledger, added);
            return added.id;
        };
        m_alex = person("Alex Example");
        m_sam = person("Sam Sample");
        m_riley = person("Riley Demo");
        m_checking = account("Demo household checking", AccountType::checking, {m_alex, m_sam});
        m_everyday = account("Demo everyday card", AccountType::creditCard, {m_alex, m_sam});
        m_travel = account("Demo travel card", AccountType::creditCard, {m_alex});
        m_rileyDebit = account("Demo Riley debit", AccountType::checking, {m_riley});
        m_savings = account("Demo rainy-day savings", AccountType::savings, {m_alex, m_sam});
        m_wallet = account("Demo cash wallet", AccountType::cash, {m_alex, m_sam});

        // Riley carries a card on the everyday account; its lines are Riley's.
        Account everyday = *m_ledger.account(m_everyday);
        everyday.cardAssignments[std::string(kRileyCard)] = SpendingAssignment::person(m_riley);
        (void)upsertAccount(m_ledger, everyday);
    }

    void addMonth(int m) {
        const int calendar = calendarMonth(m);
        const auto expense = [&](const Uuid& account, int day, int64_t cents, std::string raw,
                                 std::string category, std::string merchant,
                                 MatchMethod method = MatchMethod::directory) {
            add({.account = account,
                 .date = on(m, day),
                 .amount = -cents,
                 .raw = std::move(raw),
                 .category = std::move(category),
                 .merchant = std::move(merchant),
                 .method = method});
        };
        const auto pay = [&](int day, int64_t cents, std::string raw, std::string merchant) {
            add({.account = m_checking,
                 .date = on(m, day),
                 .amount = cents,
                 .raw = std::move(raw),
                 .category = "Salary",
                 .merchant = std::move(merchant),
                 .kind = TransactionKind::income,
                 .method = MatchMethod::learned});
        };

        for (const int day : {1, 15})
            pay(day, 265000, "Example Design Co payroll", "Example Design Co");
        for (const int day : {5, 20})
            pay(day, 198000, "Sample Learning Studio payroll", "Sample Learning Studio");

        // Home and bills, from checking.
        expense(m_checking, 2, 185000, "DEMO HOMES RENT", "Housing", "Demo Homes",
                MatchMethod::learned);
        expense(m_checking, 7, 7650, "COMCAST XFINITY", "Utilities", "Xfinity");
        expense(m_checking, 14, 8425, "ATT*BILL PAYMENT", "Utilities", "AT&T");
        expense(m_checking, 23, varying(m, 8600, 5400, 1931), "Demo Electric Cooperative",
                "Utilities", "Demo Electric Cooperative", MatchMethod::learned);

        // The steady charges, on the everyday card.
        expense(m_everyday, 4, 1549, "NETFLIX.COM", "Subscriptions", "Netflix");
        expense(m_everyday, 6, 1800, "AUDIBLE*DEMO BOOKS", "Education", "Audible");
        expense(m_everyday, 9, 1199, "SPOTIFY USA", "Subscriptions", "Spotify");
        expense(m_everyday, 12, 299, "APPLE.COM/BILL", "Subscriptions", "Apple Services");
        expense(m_everyday, 17, 2499, "PLANET FITNESS", "Health", "Planet Fitness");
        expense(m_everyday, 24, 2900, "TARGET 00021432", "Shopping", "Target");
        expense(m_everyday, 25, 2400, "CINEMARK THEATRES", "Entertainment", "Cinemark");

        // What every household spends a little differently each month.
        expense(m_everyday, dayIn(m, 5, 1), varying(m, 2400, 14000, 4513), "KROGER #0614",
                "Groceries", "Kroger");
        expense(m_everyday, dayIn(m, 7, 12), varying(m, 3100, 9000, 2711), "TRADER JOE'S #552",
                "Groceries", "Trader Joe's");
        expense(m_everyday, dayIn(m, 3, 8), varying(m, 3200, 2800, 977), "SHELL OIL 57444",
                "Transportation", "Shell");
        expense(m_everyday, dayIn(m, 9, 3), varying(m, 4200, 5200, 1877), "OLIVE GARDEN 0118",
                "Dining", "Olive Garden");
        expense(m_everyday, dayIn(m, 4, 20), varying(m, 2200, 6000, 2293), "PETCO 1432", "Pets",
                "Petco");
        expense(m_everyday, dayIn(m, 13, 6), varying(m, 1800, 7000, 3119), "OLD NAVY US 4410",
                "Shopping", "Old Navy");
        expense(m_rileyDebit, dayIn(m, 11, 4), varying(m, 1400, 2600, 733), "UBER *TRIP",
                "Transportation", "Uber");
        expense(m_rileyDebit, 19, 1250, "CHIPOTLE 1287", "Dining", "Chipotle");

        if (m % 3 == 0) {
            add({.account = m_everyday,
                 .date = on(m, 26),
                 .amount = 3299,
                 .raw = "TARGET RETURN 00021432",
                 .category = "Shopping",
                 .merchant = "Target"});
        }
        if (calendar == 11 || calendar == 12) {
            expense(m_everyday, 22, calendar == 12 ? 48739 : 29864, "AMAZON.COM*DEMO", "Shopping",
                    "Amazon");
            add({.account = m_everyday,
                 .date = on(m, 18),
                 .amount = -21450,
                 .raw = "NORDSTROM #0384",
                 .category = "Shopping",
                 .merchant = "Nordstrom",
                 .note = "Winter clothing"});
        }
        if (calendar == 12) {
            add({.account = m_everyday,
                 .date = on(m, 12),
                 .amount = -15640,
                 .raw = "ETSY.COM DEMO GIFTS",
                 .category = "Gifts & Donations",
                 .merchant = "Etsy",
                 .note = "Fictional holiday gifts"});
        }
        if (calendar == 3 || calendar == 7) {
            // The summer one is the family trip; spring is a work trip.
            const std::string note = calendar == 7 ? "Fictional family trip" : std::string(kNote);
            add({.account = m_travel,
                 .date = on(m, 11),
                 .amount = -86240,
                 .raw = "DELTA AIR LINES",
                 .category = "Travel",
                 .merchant = "Delta Air Lines",
                 .note = note});
            add({.account = m_travel,
                 .date = on(m, 16),
                 .amount = -varying(m, 38000, 26000, 7919),
                 .raw = "MARRIOTT HOTELS",
                 .category = "Travel",
                 .merchant = "Marriott",
                 .note = note});
        }

        add({.account = m_savings,
             .date = on(m, 28),
             .amount = varying(m, 310, 140, 23),
             .raw = "Demo savings interest",
             .category = "Interest & Rewards",
             .merchant = "Demo Savings Bank",
             .kind = TransactionKind::income,
             .method = MatchMethod::learned});

        transfer(m_checking, m_everyday, on(m, 8), varying(m, 95000, 40000, 13331),
                 "Everyday card payment");
        transfer(m_checking, m_travel, on(m, 10), varying(m, 15000, 30000, 9173),
                 "Travel card payment");
        transfer(m_checking, m_savings, on(m, 21), m == 11 ? 190000 : 140000,
                 "Rainy-day savings transfer");
    }

    void addPlantedSamples() {
        // Last month always lies inside the recent report periods.
        constexpr int kLast = kMonths - 2;
        const auto line = [&](Row row) { return add(std::move(row)); };

        line({.account = m_everyday,
              .date = on(kLast, 8),
              .amount = -124999,
              .raw = "BEST BUY 00012345",
              .category = "Shopping",
              .merchant = "Best Buy",
              .note = "Replacement laptop; a deliberately unusual demo purchase"});
        line({.account = m_everyday,
              .date = on(kLast - 2, 26),
              .amount = -3800,
              .raw = "KOHLS #0877",
              .category = "Shopping",
              .merchant = "Kohl's"});
        line({.account = m_everyday,
              .date = on(kLast - 1, 9),
              .amount = 3800,
              .raw = "KOHLS #0877 RETURN",
              .category = "Shopping",
              .merchant = "Kohl's",
              .note = "Returned an unused item"});
        // Dated over two weeks before any today, so it reads as stale.
        line({.account = m_travel,
              .date = on(kLast, 10),
              .amount = -20000,
              .raw = "MARRIOTT HOTELS AUTH",
              .category = "Travel",
              .merchant = "Marriott",
              .note = "Pending hotel authorization",
              .status = TransactionStatus::pending});

        // Money between people, one line for each payment service.
        line({.account = m_checking,
              .date = on(kLast, 13),
              .amount = -4500,
              .raw = "Zelle payment to Casey Example",
              .category = "Dining",
              .merchant = "Casey Example",
              .method = MatchMethod::learned,
              .note = "Shared dinner"});
        line({.account = m_checking,
              .date = on(kLast, 15),
              .amount = 2500,
              .raw = "VENMO PAYMENT MORGAN DEMO",
              .category = "Dining",
              .merchant = "Morgan Demo",
              .method = MatchMethod::learned,
              .note = "Lunch reimbursement"});
        line({.account = m_checking,
              .date = on(kLast - 1, 16),
              .amount = -3000,
              .raw = "CASH APP *TAYLOR EXAMPLE",
              .category = "Dining",
              .merchant = "Taylor Example",
              .method = MatchMethod::learned});
        line({.account = m_checking,
              .date = on(kLast - 1, 24),
              .amount = -6000,
              .raw = "PAYPAL *DEMO NEIGHBORHOOD CLUB",
              .category = "Entertainment",
              .merchant = "Demo Neighborhood Club",
              .method = MatchMethod::learned});
        line({.account = m_checking,
              .date = on(kLast, 20),
              .amount = -2000,
              .raw = "APPLE CASH SENT TO JAMIE DEMO",
              .category = "Gifts & Donations",
              .merchant = "Jamie Demo",
              .method = MatchMethod::learned});

        // Riley's card on the everyday account.
        const std::pair<int, int> wings[] = {{kLast - 1, 12}, {kLast + 1, 3}};
        for (const auto& when : wings) {
            line({.account = m_everyday,
                  .date = on(when.first, when.second),
                  .amount = -(3860 + 355 * when.first % 7),
                  .raw = "BUFFALO WILD WINGS 0231",
                  .category = "Dining",
                  .merchant = "Buffalo Wild Wings",
                  .card = std::string(kRileyCard)});
        }
        line({.account = m_everyday,
              .date = on(kLast, 17),
              .amount = -2745,
              .raw = "PET SUPPLIES PLUS #112",
              .category = "Pets",
              .merchant = "Pet Supplies Plus",
              .card = std::string(kRileyCard)});

        addReviewLines();
    }

    void addReviewLines() {
        constexpr int kLast = kMonths - 2;
        const Suggestion coffee{.merchantName = "Demo Coffee Roasters",
                                .categoryID = categoryID("Dining"),
                                .kind = TransactionKind::expense,
                                .source = MatchMethod::similar,
                                .reason = "Looks like Demo Coffee Roasters (86% similar)."};
        for (int m = kLast - 2; m <= kLast; ++m) {
            add({.account = m_everyday,
                 .date = on(m, 14),
                 .amount = -(640 + 15 * m),
                 .raw = "SQ *DEMO COFFEE RSTRS",
                 .kind = TransactionKind::unknown,
                 .method = MatchMethod::similar,
                 .review = ReviewState::suggested,
                 .suggestion = coffee,
                 .evidence = "Looks like Demo Coffee Roasters; waiting for your OK."});
        }
        for (const auto& [m, cents] : {std::pair{kLast, -2213}, std::pair{kLast + 1, -1890}}) {
            add({.account = m_checking,
                 .date = on(m, 5),
                 .amount = cents,
                 .raw = "POS DEBIT 4417 DEMO MARKET",
                 .kind = TransactionKind::unknown,
                 .method = MatchMethod::none,
                 .review = ReviewState::unresolved});
        }
        add({.account = m_checking,
             .date = on(kLast, 11),
             .amount = 15000,
             .raw = "MOBILE DEPOSIT REF 0021",
             .kind = TransactionKind::unknown,
             .method = MatchMethod::none,
             .review = ReviewState::unresolved});
        add({.account = m_everyday,
             .date = on(kLast, 21),
             .amount = -3999,
             .raw = "Demo sample: review this Local AI filing.",
             .kind = TransactionKind::unknown,
             .method = MatchMethod::ai,
             .review = ReviewState::suggested,
             .note = "Fictional example of a Local AI filing; no model was run.",
             .suggestion = Suggestion{.merchantName = "Demo Outdoor Supply",
                                      .categoryID = categoryID("Shopping"),
                                      .kind = TransactionKind::expense,
                                      .source = MatchMethod::ai,
                                      .reason = "Fictional demo AI filing"},
             .evidence = "Fictional demo AI filing"});
    }

    // The wallet through the operations a person uses: opening cash, money
    // taken out of checking, and lines typed by hand.
    void addCash() {
        constexpr int kLast = kMonths - 2;
        const auto byHand = [&](int m, int day, int64_t cents, std::string description,
                                TransactionKind kind, std::string_view category) {
            const ManualTransaction entry{.accountID = m_wallet,
                                          .date = on(m, day),
                                          .amount = cents,
                                          .description = std::move(description),
                                          .kind = kind,
                                          .categoryID = categoryID(category),
                                          .note = std::string(kNote)};
            markMade(addManualTransaction(m_ledger, entry, m_now));
        };

        markMade(addManualTransaction(m_ledger,
                                      {.accountID = m_wallet,
                                       .date = on(kLast - 1, 1),
                                       .amount = 8000,
                                       .description = "Opening cash",
                                       .note = std::string(kNote),
                                       .openingBalance = true},
                                      m_now));
        const std::pair<int, int64_t> withdrawals[] = {
            {kLast - 1, 20000}, {kLast, 16000}, {kLast + 1, 10000}};
        for (const auto& [m, cents] : withdrawals)
            markMade(
                moveCash(m_ledger, m_wallet, m_checking, on(m, 3), cents, std::nullopt, m_now));

        byHand(kLast - 1, 14, -3200, "Demo farmers market", TransactionKind::expense, "Groceries");
        byHand(kLast, 6, 6000, "Demo weekend tutoring", TransactionKind::income, "Other Income");
        byHand(kLast, 9, -1850, "Demo neighborhood lunch", TransactionKind::expense, "Dining");
        byHand(kLast, 23, -6420, "Groceries and household supplies", TransactionKind::expense,
               "Groceries");
    }

    void addCorrection() {
        const LocalDate date = on(kMonths - 2, 19);
        const Uuid id = add({.account = m_everyday,
                             .date = date,
                             .amount = -7495,
                             .raw = "HOMEGOODS #0412",
                             .category = "Shopping",
                             .merchant = "HomeGoods"});
        (void)correctTransaction(m_ledger, id, date, -6495, "HOMEGOODS #0412",
                                 "Demo correction: receipt included a $10 discount.", m_now);
    }

    void addBudgets() {
        static constexpr std::pair<std::string_view, int64_t> kBudgets[] = {
            {"Housing", 190000},       {"Groceries", 85000}, {"Dining", 40000},
            {"Transportation", 30000}, {"Shopping", 60000},  {"Utilities", 42000},
            {"Subscriptions", 8000},   {"Travel", 80000},    {"Entertainment", 15000},
        };
        for (const auto& [name, cents] : kBudgets) {
            if (const LedgerCategory* category = m_ledger.categoryNamed(name)) {
                const Uuid id = category->id;
                (void)setBudget(m_ledger, id, cents);
            }
        }
    }

    // One file per bank account over the rows a bank would have sent, as if
    // each had been imported today.
    void addBatches() {
        const std::string month = m_today.firstOfMonth().monthKey();
        const std::vector<Account> accounts = m_ledger.accounts.toVector();
        for (const Account& account : accounts) {
            if (account.type == AccountType::cash)
                continue;
            std::vector<const LedgerTransaction*> rows;
            for (const auto& transaction : m_ledger.transactions) {
                if (transaction.accountID == account.id && !transaction.entrySource)
                    rows.push_back(&transaction);
            }
            if (rows.empty())
                continue;
            std::sort(rows.begin(), rows.end(), [](const auto* a, const auto* b) {
                return std::tie(a->date, a->fingerprint) < std::tie(b->date, b->fingerprint);
            });
            const auto count = static_cast<int64_t>(rows.size());
            ImportBatch batch{.id = Uuid::random(),
                              .fileName = "Demo household " + account.name + " " + month + ".csv",
                              .fileHash = "demo-" + Uuid::random().text(),
                              .accountID = account.id,
                              .profileID = "demo-fictional",
                              .importedAt = m_now,
                              .counts = {.totalRows = count, .imported = count},
                              .firstDate = rows.front()->date,
                              .lastDate = rows.back()->date};
            std::vector<Uuid> ids;
            ids.reserve(rows.size());
            for (const auto* row : rows)
                ids.push_back(row->id);
            for (std::size_t i = 0; i < ids.size(); ++i) {
                m_ledger.transactions.update(ids[i], [&](LedgerTransaction& transaction) {
                    transaction.batchID = batch.id;
                    transaction.sourceLine = static_cast<int64_t>(i) + 1;
                });
            }
            m_ledger.batches.push_back(std::move(batch));
        }
    }

    static constexpr std::string_view kRileyCard = "Cardholder: Riley Demo";

    LocalDate m_today;
    LocalDate m_start;
    Instant m_now;
    Ledger m_ledger;
    int64_t m_serial = 0;
    Uuid m_alex, m_sam, m_riley;
    Uuid m_checking, m_everyday, m_travel, m_rileyDebit, m_savings, m_wallet;
};

}  // namespace

Ledger make(LocalDate today) {
    return Household(today).make();
}

}  // namespace copperwick::DemoLedger
