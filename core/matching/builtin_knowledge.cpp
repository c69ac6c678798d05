#include "core/matching/builtin_knowledge.h"

#include <string_view>

namespace copperwick {

namespace {

// A card payment is named by the card's issuer and a payment word, which
// banks print in either order.
constexpr const char* kCardIssuers =
    "CHASE CREDIT CRD|CHASE CARD|APPLECARD GSBANK|APPLE CARD|CITI CARD|CITI AUTOPAY|"
    "CITICARD|CAPITAL ONE|COMENITY|DISCOVER|AMEX|AMERICAN EXPRESS|BARCLAYCARD|"
    "SYNCHRONY|SYNCB|WF CREDIT CARD|WELLS FARGO CARD|ACTIVE CASH VISA|"
    "BK OF AMER VISA|BANK OF AMERICA CREDIT CARD|CREDIT CARD|CARDMEMBER SERV|KOHLS|"
    "MACYS|TARGET CARD|US BANK CREDIT";

constexpr const char* kPaymentWords = "PAYMENT|PYMT|PMT|AUTOPAY|AUTO PAY|EPAY|E-PAYMENT";

std::string eitherOrder(std::string_view first, std::string_view second) {
    const std::string a(first);
    const std::string b(second);
    return "(" + a + ").*(" + b + ")|(" + b + ").*(" + a + ")";
}

std::vector<BuiltInRule> makeRules() {
    using enum AccountType;
    const std::vector<AccountType> everyAccount;
    const std::vector<AccountType> depositAccounts = {checking, savings};
    return {
        {"tax-refund", "Tax refund", "TAX REF|TAXRFD|TAX REFUND", AmountDirection::moneyIn,
         everyAccount, TransactionKind::income, "Refunds & Settlements"},
        {"tax-payment", "Tax payment",
         "USATAXPYMT|IRS TREAS 310 TAX PAY|EFTPS|FRANCHISE TAX BD.*(PAYMENT|PMT)|FTB.*PAYMENT",
         AmountDirection::moneyOut, everyAccount, TransactionKind::expense, "Taxes"},
        {"interest-charged", "Interest charged",
         "INTEREST CHARGE|INTEREST CHARGED|PURCHASE INTEREST|FINANCE CHARGE",
         AmountDirection::moneyOut, everyAccount, TransactionKind::expense, "Fees & Interest"},
        {"bank-fees", "Bank and card fees",
         "LATE FEE|ANNUAL FEE|ANNUAL MEMBERSHIP FEE|FOREIGN TRANSACTION FEE|FOREIGN TRANS FEE|"
         "MONTHLY SERVICE FEE|MAINTENANCE FEE|OVERDRAFT|NSF FEE|RETURNED ITEM FEE|ATM FEE|"
         "WIRE FEE|CASH ADVANCE FEE|NON-WF ATM FEE",
         AmountDirection::moneyOut, everyAccount, TransactionKind::expense, "Fees & Interest"},
        // Filed as an expense on purpose: the money comes back against the
        // fee, so the fee's category nets out instead of income growing.
        {"fee-refund", "Fee or interest refund",
         "FEE REVERSAL|FEE REFUND|INTEREST REFUND|INTEREST REVERSAL|FEE WAIVER",
         AmountDirection::moneyIn, everyAccount, TransactionKind::expense, "Fees & Interest"},
        {"payroll", "Paycheck", "PAYROLL|DIR DEP|DIRECT DEP|DIRECT DEPOSIT|SALARY|PAYCHECK",
         AmountDirection::moneyIn, depositAccounts, TransactionKind::income, "Salary"},
        {"interest-earned", "Interest earned",
         "INTEREST PAYMENT|INTEREST PAID|INTEREST EARNED|INTEREST CREDIT|DIVIDEND",
         AmountDirection::moneyIn, depositAccounts, TransactionKind::income, "Interest & Rewards"},
        {"rewards", "Cash back and rewards",
         "CASH ?BACK REDEMPTION|DAILY CASH|REWARDS? REDEMPTION|REDEEM(ED)? REWARDS",
         AmountDirection::moneyIn, everyAccount, TransactionKind::income, "Interest & Rewards"},
        {"atm-cash", "ATM cash withdrawal",
         "ATM WITHDRAWAL|ATM CASH WITHDRAWAL|CASH WITHDRAWAL|ATM WITHDRAW|ATM DEBIT",
         AmountDirection::moneyOut, everyAccount, TransactionKind::expense, "Cash & ATM"},
        // The one rule for both directions: a transfer leaves one account
        // and arrives in another, and either side may be imported.
        {"own-transfer", "Transfer between your accounts",
         "ONLINE TRANSFER (TO|FROM)|TRANSFER (TO|FROM) (SAV|CHK|CHECKING|SAVINGS|SHARE)|"
         "ONLINE BANKING TRANSFER|WAY2SAVE|FUNDS TRANSFER|INTERNAL TRANSFER|XFER (TO|FROM)|"
         "SAVE AS YOU GO|KEEP THE CHANGE",
         AmountDirection::any, everyAccount, TransactionKind::transfer, std::nullopt},
        // The paying side of a card bill; the card's own side is the next rule.
        {"card-payment-out",
         "Credit card payment",
         eitherOrder(kCardIssuers, kPaymentWords),
         AmountDirection::moneyOut,
         {checking, savings, other},
         TransactionKind::transfer,
         std::nullopt},
        {"card-payment-in",
         "Credit card payment received",
         "PAYMENT,? THANK YOU|PAYMENT - THANK YOU|PAYMENT RECEIVED|AUTOPAY PAYMENT|"
         "AUTOMATIC PAYMENT|ONLINE PAYMENT|MOBILE PAYMENT|ONLINE PYMT|MOBILE PYMT|"
         "INTERNET PAYMENT|ACH DEPOSIT INTERNET TRANSFER|AUTOPAY|PAYMENT FROM|"
         "ELECTRONIC PAYMENT|^PAYMENT$|THANK YOU FOR YOUR PAYMENT",
         AmountDirection::moneyIn,
         {creditCard},
         TransactionKind::transfer,
         std::nullopt},
    };
}

// Grouped under the category's heading; a heading may come back later in
// the table, since the order of entries, not the grouping, decides ties.
std::vector<DirectoryEntry> makeMerchants() {
    return {
        // Groceries
        {"Safeway", "Groceries", {"SAFEWAY"}},
        {"Raley's", "Groceries", {"RALEY'S", "RALEYS"}},
        {"Trader Joe's", "Groceries", {"TRADER JOE'S", "TRADER JOES"}},
        {"Whole Foods", "Groceries", {"WHOLEFDS", "WHOLE FOODS"}},
        {"Costco", "Groceries", {"COSTCO", "COSTCO WHSE"}},
        {"Costco (Instacart)", "Groceries", {"COSTCO BY INSTACART"}},
        {"Instacart", "Groceries", {"INSTACART"}},
        {"Kroger", "Groceries", {"KROGER"}},
        {"Albertsons", "Groceries", {"ALBERTSONS"}},
        {"Lucky", "Groceries", {"LUCKY SUPERMARKET", "LUCKY #"}},
        {"Sprouts", "Groceries", {"SPROUTS FARMERS"}},
        {"Aldi", "Groceries", {"ALDI"}},
        {"Grocery Outlet", "Groceries", {"GROCERY OUTLET"}},
        {"Smart & Final", "Groceries", {"SMART AND FINAL", "SMART & FINAL"}},
        {"Sam's Club", "Groceries", {"SAMS CLUB", "SAMSCLUB", "SAM'S CLUB"}},
        {"WinCo", "Groceries", {"WINCO"}},
        {"Publix", "Groceries", {"PUBLIX"}},
        {"H-E-B", "Groceries", {"H-E-B", "HEB #"}},
        {"Save Mart", "Groceries", {"SAVEMART", "SAVE MART"}},
        {"FoodMaxx", "Groceries", {"FOODMAXX"}},
        {"99 Ranch", "Groceries", {"99 RANCH"}},
        {"Vons", "Groceries", {"VONS"}},
        {"Ralphs", "Groceries", {"RALPHS"}},
        {"Food 4 Less", "Groceries", {"FOOD 4 LESS"}},
        {"Walmart Grocery", "Groceries", {"WALMART GROCERY"}},
        // Dining
        {"Starbucks", "Dining", {"STARBUCKS"}},
        {"Dunkin'", "Dining", {"DUNKIN"}},
        {"Peet's Coffee", "Dining", {"PEET'S", "PEETS"}},
        {"Dutch Bros", "Dining", {"DUTCH BROS"}},
        {"McDonald's", "Dining", {"MCDONALD'S", "MCDONALDS"}},
        {"Chick-fil-A", "Dining", {"CHICK-FIL-A", "CHICKFILA", "CHICK FIL A"}},
        {"Panda Express", "Dining", {"PANDA EXPRESS"}},
        {"Texas Roadhouse", "Dining", {"TEXAS ROADHOUSE"}},
        {"Raising Cane's", "Dining", {"RAISING CANES", "RAISING CANE'S"}},
        {"Panera Bread", "Dining", {"PANERA"}},
        {"Jamba", "Dining", {"JAMBA"}},
        {"Chipotle", "Dining", {"CHIPOTLE"}},
        {"Chili's", "Dining", {"CHILI'S", "CHILIS"}},
        {"Jimmy John's", "Dining", {"JIMMY JOHNS", "JIMMY JOHN'S"}},
        {"Carl's Jr.", "Dining", {"CARLS JR", "CARL'S JR"}},
        {"Applebee's", "Dining", {"APPLEBEES", "APPLEBEE'S"}},
        {"Sonic Drive-In", "Dining", {"SONIC DRIVE IN", "SONIC DRIVE-IN"}},
        {"BJ's Restaurant", "Dining", {"BJ'S RESTAURANT", "BJS RESTAURANT", "BJSRESTAURANTS"}},
        {"Del Taco", "Dining", {"DEL TACO"}},
        {"Taco Bell", "Dining", {"TACO BELL"}},
        {"In-N-Out", "Dining", {"IN-N-OUT", "IN N OUT"}},
        {"Wendy's", "Dining", {"WENDY'S", "WENDYS"}},
        {"Burger King", "Dining", {"BURGER KING"}},
        {"Jack in the Box", "Dining", {"JACK IN THE BOX"}},
        {"Subway", "Dining", {"SUBWAY"}},
        {"Domino's", "Dining", {"DOMINO'S", "DOMINOS"}},
        {"Pizza Hut", "Dining", {"PIZZA HUT"}},
        {"Round Table Pizza", "Dining", {"ROUND TABLE PIZZA"}},
        {"Little Caesars", "Dining", {"LITTLE CAESARS"}},
        {"Papa John's", "Dining", {"PAPA JOHN'S", "PAPA JOHNS"}},
        {"Five Guys", "Dining", {"FIVE GUYS"}},
        {"Shake Shack", "Dining", {"SHAKE SHACK"}},
        {"Wingstop", "Dining", {"WINGSTOP"}},
        {"Popeyes", "Dining", {"POPEYES"}},
        {"KFC", "Dining", {"KFC"}},
        {"El Pollo Loco", "Dining", {"EL POLLO LOCO"}},
        {"Olive Garden", "Dining", {"OLIVE GARDEN"}},
        {"Red Robin", "Dining", {"RED ROBIN"}},
        {"Denny's", "Dining", {"DENNY'S", "DENNYS"}},
        {"IHOP", "Dining", {"IHOP"}},
        {"The Cheesecake Factory", "Dining", {"CHEESECAKE FACTORY"}},
        {"Ninety Nine Restaurant", "Dining", {"NINETY NINE"}},
        {"Teriyaki Madness", "Dining", {"TERIYAKI MADNESS"}},
        {"Jersey Mike's", "Dining", {"JERSEY MIKES", "JERSEY MIKE'S"}},
        {"Firehouse Subs", "Dining", {"FIREHOUSE SUBS"}},
        {"Noodles & Company", "Dining", {"NOODLES & CO", "NOODLES AND CO"}},
        {"Krispy Kreme", "Dining", {"KRISPY KREME"}},
        {"Baskin-Robbins", "Dining", {"BASKIN"}},
        {"Cold Stone", "Dining", {"COLD STONE"}},
        {"Dave's Hot Chicken", "Dining", {"DAVES HOT CHICKEN", "DAVE'S HOT CHICKEN"}},
        {"Sweetgreen", "Dining", {"SWEETGREEN"}},
        {"Habit Burger", "Dining", {"HABIT BURGER", "THE HABIT"}},
        {"Togo's", "Dining", {"TOGO'S", "TOGOS"}},
        {"Blaze Pizza", "Dining", {"BLAZE PIZZA"}},
        {"MOD Pizza", "Dining", {"MOD PIZZA"}},
        {"Buffalo Wild Wings", "Dining", {"BUFFALO WILD WINGS", "BWW"}},
        {"Outback Steakhouse", "Dining", {"OUTBACK"}},
        {"P.F. Chang's", "Dining", {"P.F. CHANG", "PF CHANG"}},
        {"Yard House", "Dining", {"YARD HOUSE"}},
        {"DoorDash", "Dining", {"DOORDASH", "DD *"}},
        {"Uber Eats", "Dining", {"UBER *EATS", "UBER EATS", "UBEREATS"}},
        {"Grubhub", "Dining", {"GRUBHUB"}},
        {"Postmates", "Dining", {"POSTMATES"}},
        // Transportation
        {"Uber", "Transportation", {"UBER *TRIP", "UBER TRIP", "UBER"}},
        {"Lyft", "Transportation", {"LYFT"}},
        {"Shell", "Transportation", {"SHELL OIL", "SHELL SERVICE", "SHELL"}},
        {"Chevron", "Transportation", {"CHEVRON"}},
        {"Arco", "Transportation", {"ARCO", "AMPM"}},
        {"Union 76", "Transportation", {"UNION 76"}},
        {"Valero", "Transportation", {"VALERO"}},
        {"Exxon", "Transportation", {"EXXON", "EXXONMOBIL"}},
        {"Mobil", "Transportation", {"MOBIL"}},
        {"Costco Gas", "Transportation", {"COSTCO GAS"}},
        {"Safeway Fuel", "Transportation", {"SAFEWAY FUEL"}},
        {"Circle K", "Transportation", {"CIRCLE K"}},
        {"Speedway", "Transportation", {"SPEEDWAY"}},
        {"Tesla Supercharger", "Transportation", {"TESLA SUPERCHARGER"}},
        {"ChargePoint", "Transportation", {"CHARGEPOINT"}},
        {"FasTrak", "Transportation", {"FASTRAK"}},
        {"BART", "Transportation", {"BART-", "BART CLIPPER", "CLIPPER"}},
        {"Metropolis Parking", "Transportation", {"METROPOLIS PARKING", "METROPOLIS"}},
        {"ParkMobile", "Transportation", {"PARKMOBILE"}},
        {"SpotHero", "Transportation", {"SPOTHERO"}},
        {"DMV", "Transportation", {"DMV", "DEPT OF MOTOR VEH"}},
        {"Jiffy Lube", "Transportation", {"JIFFY LUBE"}},
        {"AutoZone", "Transportation", {"AUTOZONE"}},
        {"O'Reilly Auto Parts", "Transportation", {"O'REILLY", "OREILLY AUTO"}},
        {"Discount Tire", "Transportation", {"DISCOUNT TIRE"}},
        {"Les Schwab", "Transportation", {"LES SCHWAB"}},
        // Shopping
        {"Amazon",
         "Shopping",
         {"AMAZON", "AMZN", "AMAZON MKTPL", "AMAZON MKTPLACE", "AMAZON.COM", "AMZN MKTP"}},
        {"Walmart", "Shopping", {"WALMART", "WAL-MART", "WM SUPERCENTER"}},
        {"Target", "Shopping", {"TARGET", "TARGET.COM"}},
        {"Kohl's", "Shopping", {"KOHLS", "KOHL'S"}},
        {"Macy's", "Shopping", {"MACYS", "MACY'S"}},
        {"Nordstrom", "Shopping", {"NORDSTROM"}},
        {"Nordstrom Rack", "Shopping", {"NORDSTROM RACK", "NORDSTROMRACK"}},
        {"TJ Maxx", "Shopping", {"TJ MAXX", "TJMAXX", "T.J. MAXX"}},
        {"Marshalls", "Shopping", {"MARSHALLS"}},
        {"Ross", "Shopping", {"ROSS STORES", "ROSS DRESS"}},
        {"HomeGoods", "Shopping", {"HOMEGOODS"}},
        {"Abercrombie & Fitch", "Shopping", {"ABERCROMBIE"}},
        {"Hollister", "Shopping", {"HOLLISTER"}},
        {"Anthropologie", "Shopping", {"ANTHROPOLOGIE"}},
        {"Old Navy", "Shopping", {"OLD NAVY"}},
        {"Gap", "Shopping", {"GAP US", "GAP.COM", "GAP OUTLET"}},
        {"Nike", "Shopping", {"NIKE"}},
        {"Adidas", "Shopping", {"ADIDAS"}},
        {"Lululemon", "Shopping", {"LULULEMON"}},
        {"New Era", "Shopping", {"NEWERACAP", "NEW ERA CAP"}},
        {"Best Buy", "Shopping", {"BEST BUY", "BESTBUY"}},
        {"Apple Store", "Shopping", {"APPLE STORE", "APPLE ONLINE STORE", "APPLE.COM/US"}},
        {"Temu", "Shopping", {"TEMU"}},
        {"Shein", "Shopping", {"SHEIN"}},
        {"DHgate", "Shopping", {"DHGATE"}},
        {"AliExpress", "Shopping", {"ALIEXPRESS"}},
        {"TikTok Shop", "Shopping", {"TIKTOK SHOP"}},
        {"Etsy", "Shopping", {"ETSY"}},
        {"eBay", "Shopping", {"EBAY"}},
        {"Wayfair", "Shopping", {"WAYFAIR"}},
        {"IKEA", "Shopping", {"IKEA"}},
        {"Home Depot", "Shopping", {"HOME DEPOT", "HOMEDEPOT"}},
        {"Lowe's", "Shopping", {"LOWE'S", "LOWES"}},
        {"Ace Hardware", "Shopping", {"ACE HARDWARE", "ACE HDWE"}},
        {"Hobby Lobby", "Shopping", {"HOBBY LOBBY", "HOBBYLOBBY"}},
        {"Michaels", "Shopping", {"MICHAELS"}},
        {"Joann", "Shopping", {"JOANN"}},
        {"Dollar Tree", "Shopping", {"DOLLAR TREE", "DOLLARTREE"}},
        {"Dollar General", "Shopping", {"DOLLAR GENERAL"}},
        {"Five Below", "Shopping", {"FIVE BELOW"}},
        {"Bed Bath & Beyond", "Shopping", {"BED BATH"}},
        {"Staples", "Shopping", {"STAPLES"}},
        {"Office Depot", "Shopping", {"OFFICE DEPOT"}},
        {"GameStop", "Shopping", {"GAMESTOP"}},
        {"Dick's Sporting Goods", "Shopping", {"DICK'S SPORTING", "DICKS SPORTING"}},
        {"REI", "Shopping", {"REI #", "REI.COM"}},
        {"Big 5", "Shopping", {"BIG 5 SPORTING"}},
        {"Bath & Body Works", "Shopping", {"BATH & BODY", "BATH AND BODY"}},
        {"Victoria's Secret", "Shopping", {"VICTORIA'S SECRET", "VICTORIAS SECRET"}},
        {"Coinbase", "Shopping", {"COINBASE~"}},
        {"Apple Card Installments", "Shopping", {"MONTHLY INSTALLMENTS"}},
        // Personal Care
        {"Sephora", "Personal Care", {"SEPHORA"}},
        {"Ulta Beauty", "Personal Care", {"ULTA"}},
        {"Sally Beauty", "Personal Care", {"SALLY BEAUTY"}},
        {"Great Clips", "Personal Care", {"GREAT CLIPS"}},
        {"Supercuts", "Personal Care", {"SUPERCUTS"}},
        {"European Wax Center", "Personal Care", {"EUROPEAN WAX"}},
        // Pets
        {"Petco", "Pets", {"PETCO"}},
        {"PetSmart", "Pets", {"PETSMART"}},
        {"Chewy", "Pets", {"CHEWY"}},
        {"Banfield", "Pets", {"BANFIELD"}},
        // Health
        {"CVS", "Health", {"CVS"}},
        {"Walgreens", "Health", {"WALGREENS"}},
        {"Rite Aid", "Health", {"RITE AID"}},
        {"Kaiser Permanente", "Health", {"KAISER"}},
        {"Sutter Health", "Health", {"SUTTER HEALTH"}},
        {"Quest Diagnostics", "Health", {"QUEST DIAGNOSTICS"}},
        {"LabCorp", "Health", {"LABCORP"}},
        {"24 Hour Fitness", "Health", {"24 HOUR FITNESS"}},
        {"Planet Fitness", "Health", {"PLANET FITNESS"}},
        {"Crunch Fitness", "Health", {"CRUNCH FITNESS"}},
        {"LA Fitness", "Health", {"LA FITNESS"}},
        {"Oura", "Health", {"OURARING", "OURA RING"}},
        {"GoodRx", "Health", {"GOODRX"}},
        // Subscriptions
        {"Netflix", "Subscriptions", {"NETFLIX"}},
        {"Spotify", "Subscriptions", {"SPOTIFY"}},
        {"Hulu", "Subscriptions", {"HULU"}},
        {"Disney+", "Subscriptions", {"DISNEY PLUS", "DISNEYPLUS", "DISNEY+"}},
        {"Max", "Subscriptions", {"HBO MAX", "MAX.COM"}},
        {"Paramount+", "Subscriptions", {"PARAMOUNT+", "PARAMOUNT PLUS"}},
        {"Peacock", "Subscriptions", {"PEACOCK"}},
        {"YouTube TV", "Subscriptions", {"YOUTUBE TV", "YOUTUBETV"}},
        {"YouTube Premium", "Subscriptions", {"YOUTUBE PREMIUM", "YOUTUBEPREMIUM"}},
        {"Google One", "Subscriptions", {"GOOGLE ONE", "GOOGLE STORAGE"}},
        {"Apple Services",
         "Subscriptions",
         {"APPLE.COM/BILL", "APPLE.COM BILL", "ITUNES.COM/BILL"}},
        {"Amazon Prime", "Subscriptions", {"AMAZON PRIME", "PRIME VIDEO", "AMZN PRIME"}},
        {"Audible", "Subscriptions", {"AUDIBLE"}},
        {"Roku", "Subscriptions", {"ROKU"}},
        {"Sling TV", "Subscriptions", {"SLING.COM", "SLING TV"}},
        {"SiriusXM", "Subscriptions", {"SIRIUSXM", "SIRIUS XM"}},
        {"Anthropic", "Subscriptions", {"ANTHROPIC", "CLAUDE.AI"}},
        {"OpenAI", "Subscriptions", {"OPENAI", "CHATGPT"}},
        {"Microsoft", "Subscriptions", {"MICROSOFT", "MSFT"}},
        {"Adobe", "Subscriptions", {"ADOBE"}},
        {"Dropbox", "Subscriptions", {"DROPBOX"}},
        {"Uber One", "Subscriptions", {"UBER *ONE MEMBERSHIP", "UBER ONE"}},
        {"DashPass", "Subscriptions", {"DASHPASS"}},
        {"Patreon", "Subscriptions", {"PATREON"}},
        // Entertainment
        {"PlayStation", "Entertainment", {"PLAYSTATION", "SONY INTERACTIVE"}},
        {"Xbox", "Entertainment", {"XBOX"}},
        {"Nintendo", "Entertainment", {"NINTENDO"}},
        {"Steam", "Entertainment", {"STEAMGAMES", "STEAM PURCHASE"}},
        {"Ticketmaster", "Entertainment", {"TICKETMASTER", "TM *"}},
        {"StubHub", "Entertainment", {"STUBHUB"}},
        {"Vivid Seats", "Entertainment", {"VIVID SEATS", "VIVIDSEATS"}},
        {"SeatGeek", "Entertainment", {"SEATGEEK"}},
        {"Eventbrite", "Entertainment", {"EVENTBRITE"}},
        {"AMC Theatres", "Entertainment", {"AMC "}},
        {"Cinemark", "Entertainment", {"CINEMARK"}},
        {"Regal", "Entertainment", {"REGAL CINEMAS", "REGAL "}},
        {"Fandango", "Entertainment", {"FANDANGO"}},
        // Insurance
        {"Allianz Event Insurance", "Insurance", {"ALLIANZ EVENT INS"}},
        // Entertainment
        {"Dave & Buster's", "Entertainment", {"DAVE & BUSTER", "DAVE AND BUSTER"}},
        // Travel
        {"Airbnb", "Travel", {"AIRBNB"}},
        {"Vrbo", "Travel", {"VRBO"}},
        {"Expedia", "Travel", {"EXPEDIA"}},
        {"Booking.com", "Travel", {"BOOKING.COM"}},
        {"Hotels.com", "Travel", {"HOTELS.COM"}},
        {"Marriott", "Travel", {"MARRIOTT"}},
        {"Hilton", "Travel", {"HILTON"}},
        {"Hyatt", "Travel", {"HYATT"}},
        {"Staybridge Suites", "Travel", {"STAYBRIDGE"}},
        {"Holiday Inn", "Travel", {"HOLIDAY INN"}},
        {"Southwest Airlines", "Travel", {"SOUTHWEST AIR", "SOUTHWES"}},
        {"United Airlines", "Travel", {"UNITED AIRLINES", "UNITED AIR"}},
        {"Delta", "Travel", {"DELTA AIR"}},
        {"American Airlines", "Travel", {"AMERICAN AIR"}},
        {"Alaska Airlines", "Travel", {"ALASKA AIR"}},
        {"JetBlue", "Travel", {"JETBLUE"}},
        {"Spirit Airlines", "Travel", {"SPIRIT AIRL"}},
        {"Hertz", "Travel", {"HERTZ"}},
        {"Enterprise Rent-A-Car", "Travel", {"ENTERPRISE RENT"}},
        {"Avis", "Travel", {"AVIS RENT", "AVIS.COM"}},
        {"Amtrak", "Travel", {"AMTRAK"}},
        // Utilities
        {"PG&E", "Utilities", {"PG&E", "PGANDE", "PACIFIC GAS"}},
        {"Comcast Xfinity", "Utilities", {"COMCAST", "XFINITY"}},
        {"AT&T", "Utilities", {"AT&T", "ATT*"}},
        {"Verizon", "Utilities", {"VERIZON", "VZWRLSS"}},
        {"T-Mobile", "Utilities", {"T-MOBILE", "TMOBILE"}},
        {"Spectrum", "Utilities", {"SPECTRUM"}},
        {"Mint Mobile", "Utilities", {"MINT MOBILE"}},
        {"Visible", "Utilities", {"VISIBLE.COM", "VISIBLE SERVICE"}},
        {"Sonic Internet", "Utilities", {"SONIC.NET", "SONIC TELECOM"}},
        // Housing
        {"Zillow Rent", "Housing", {"ZILLOW RENT", "ZILLOW RENTALS"}},
        {"Bilt Rent", "Housing", {"BILT RENT", "BILTRENT"}},
        {"RentCafe", "Housing", {"RENTCAFE"}},
        {"AppFolio", "Housing", {"APPFOLIO"}},
        {"Yardi", "Housing", {"YARDI"}},
        // Insurance
        {"Lemonade Insurance", "Insurance", {"LEMONADE INSURANCE", "LEMONADE INS"}},
        {"GEICO", "Insurance", {"GEICO"}},
        {"State Farm", "Insurance", {"STATE FARM"}},
        {"Progressive", "Insurance", {"PROGRESSIVE INS"}},
        {"Allstate", "Insurance", {"ALLSTATE"}},
        {"Root Insurance", "Insurance", {"ROOT INSURANCE"}},
        // Education
        {"Parchment", "Education", {"PARCHMENT"}},
        {"Study.com", "Education", {"STUDY.COM", "STUDY COM"}},
        {"Coursera", "Education", {"COURSERA"}},
        {"Udemy", "Education", {"UDEMY"}},
        {"Chegg", "Education", {"CHEGG"}},
        // Gifts & Donations
        {"GoFundMe", "Gifts & Donations", {"GOFUNDME"}},
        {"1-800-Flowers", "Gifts & Donations", {"1-800-FLOWERS", "1800FLOWERS"}},
    };
}

}  // namespace

std::string describeBuiltInRule(const BuiltInRule& rule) {
    // The rule list names account types its own way: a checking account in full.
    const auto typeText = [](AccountType type) -> std::string_view {
        return type == AccountType::checking ? "Checking account" : label(type);
    };
    std::string types;
    for (const auto type : rule.accountTypes)
        types += (types.empty() ? "" : ", ") + std::string(typeText(type));
    std::string text = std::string(label(rule.direction)) + ", " +
                       (types.empty() ? std::string("Any account") : types) + " \u2192 " +
                       std::string(label(rule.kind));
    if (rule.categoryName)
        text += ", " + *rule.categoryName;
    return text;
}

namespace BuiltInKnowledge {

// Never destroyed: a worker thread may still be matching while the process exits.
const std::vector<BuiltInRule>& rules() {
    static const auto& table = *new std::vector<BuiltInRule>(makeRules());
    return table;
}

const std::vector<DirectoryEntry>& merchants() {
    static const auto& table = *new std::vector<DirectoryEntry>(makeMerchants());
    return table;
}

std::string directoryText() {
    return "Plus " + std::to_string(merchants().size()) +
           " well-known merchants (Starbucks, Amazon, Safeway, Netflix\u2026) with a default "
           "category. Your own choices always win.";
}

}  // namespace BuiltInKnowledge

}  // namespace copperwick

std::size_t std::hash<copperwick::DirectoryEntry>::operator()(
    const copperwick::DirectoryEntry& entry) const noexcept {
    const std::hash<std::string> hashText;
    std::size_t seed = 0;
    const auto mix = [&seed](std::size_t value) {
        seed ^= value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2);
    };
    mix(hashText(entry.name));
    mix(hashText(entry.category));
    for (const auto& phrase : entry.phrases)
        mix(hashText(phrase));
    return seed;
}
