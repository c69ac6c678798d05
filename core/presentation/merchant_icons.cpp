#include "core/presentation/merchant_icons.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <span>
#include <system_error>
#include <utility>

#include <unicode/brkiter.h>
#include <unicode/normalizer2.h>
#include <unicode/regex.h>
#include <unicode/uchar.h>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include "core/matching/builtin_knowledge.h"
#include "core/model/payment_service.h"
#include "core/model/text.h"
#include "core/reports/report_engine.h"

#ifndef COPPERWICK_INSTALL_DATADIR
#define COPPERWICK_INSTALL_DATADIR "/usr/local/share"
#endif

namespace copperwick {

namespace {

namespace fs = std::filesystem;
using Tone = MerchantIconDescriptor::Tone;

constexpr std::string_view kBundleName = "Copperwick_CopperwickCore.bundle";
constexpr std::string_view kPreparedFolder = "PreparedMerchantIcons";
constexpr std::string_view kBrandFolder = "MerchantIcons";
constexpr std::string_view kPreparedPrefix = "prepared-";
constexpr std::string_view kPersonPayment = "prepared-person-payment";

struct Badge {
    std::string_view name;  // folded
    std::string_view symbol;
    Tone tone;
};

// The demo workspace's fictional merchants, by folded name. Each wears the
// tone of the category its symbol stands for.
constexpr std::array<Badge, 11> kDemoSymbols{{
    {"example activities", "star.fill", Tone::ochre},
    {"sample books", "book.closed.fill", Tone::terracotta},
    {"example services", "briefcase.fill", Tone::neutral},
    {"sample goods", "bag.fill", Tone::terracotta},
    {"example bus", "bus.fill", Tone::blue},
    {"sample transit", "tram.fill", Tone::blue},
    {"example kitchen", "fork.knife", Tone::ochre},
    {"sample lunch", "takeoutbag.and.cup.and.straw.fill", Tone::ochre},
    {"example cafe", "cup.and.saucer.fill", Tone::ochre},
    {"sample market", "basket.fill", Tone::sage},
    {"sample property rent", "house.fill", Tone::forest},
}};

// By folded category name.
constexpr std::array<Badge, 12> kCategorySymbols{{
    {"housing", "house.fill", Tone::forest},
    {"groceries", "basket.fill", Tone::sage},
    {"dining", "fork.knife", Tone::ochre},
    {"transportation", "car.fill", Tone::blue},
    {"shopping", "bag.fill", Tone::terracotta},
    {"subscriptions", "repeat", Tone::sage},
    {"utilities", "bolt.fill", Tone::ochre},
    {"health", "cross.case.fill", Tone::sage},
    {"personal care", "sparkles", Tone::terracotta},
    {"entertainment", "ticket.fill", Tone::ochre},
    {"travel", "airplane", Tone::blue},
    {"education", "book.closed.fill", Tone::terracotta},
}};

const Badge* findBadge(std::span<const Badge> badges, std::string_view folded) {
    for (const Badge& badge : badges) {
        if (badge.name == folded)
            return &badge;
    }
    return nullptr;
}

struct Purpose {
    const char16_t* pattern;
    std::string_view asset;
};

// Payments for a purpose rather than to a brand, tried in this order.
constexpr std::array<Purpose, 4> kPurposes{{
    {uR"re(\bbackground\s+check\b)re", "prepared-teacher-background-check"},
    {uR"re(\btranscript\b)re", "prepared-diploma"},
    {uR"re(\bdonation\b)re", "prepared-donation"},
    {uR"re(\buniversity(?:a)?\b)re", "prepared-university"},
}};

using Pattern = std::unique_ptr<icu::RegexPattern>;

// A pattern that doesn't compile is a fault in this file, found by any test.
Pattern compile(const char16_t* source, uint32_t flags = 0) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError where{};
    Pattern pattern(icu::RegexPattern::compile(icu::UnicodeString(source), flags, where, status));
    if (U_FAILURE(status) || !pattern) {
        std::fprintf(stderr, "copperwick: icon pattern doesn't compile at offset %d: %s\n",
                     where.offset, u_errorName(status));
        std::abort();
    }
    return pattern;
}

struct Patterns {
    Pattern zelle = compile(uR"re(\bzelle(?:pay)?\b)re");
    // " store #12", " #12b", " 1234" at the end: the branch, not the brand.
    Pattern storeNumber =
        compile(uR"re(\s+(?:(?:store\s*#?\s*|#\s*)\d+[a-z]?|\d{3,})$)re", UREGEX_CASE_INSENSITIVE);
    std::array<Pattern, kPurposes.size()> purposes;

    Patterns() {
        for (std::size_t i = 0; i < kPurposes.size(); ++i)
            purposes[i] = compile(kPurposes[i].pattern);
    }
};

// Never destroyed: a badge may still be asked for on a worker while the process exits.
const Patterns& patterns() {
    static const Patterns& shared = *new Patterns;
    return shared;
}

bool finds(const icu::RegexPattern& pattern, const icu::UnicodeString& text) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> matcher(pattern.matcher(text, status));
    return U_SUCCESS(status) && matcher->find(status) && U_SUCCESS(status);
}

// Folded directory name to the entry's category; the first entry keeps a name.
const std::unordered_map<std::string, std::string>& defaultCategories() {
    static const auto& shared = *[] {
        auto* map = new std::unordered_map<std::string, std::string>;
        for (const DirectoryEntry& entry : BuiltInKnowledge::merchants())
            map->emplace(MerchantIconCatalog::fold(entry.name), entry.category);
        return map;
    }();
    return shared;
}

// A catalog that is missing or doesn't decode as a whole counts as empty.
std::vector<MerchantIconBrand> readBrands(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return {};
    const std::string contents{std::istreambuf_iterator<char>(in), {}};
    boost::system::error_code error;
    const boost::json::value document = boost::json::parse(contents, error);
    if (error || !document.is_array())
        return {};
    std::vector<MerchantIconBrand> brands;
    for (const boost::json::value& item : document.get_array()) {
        const auto* object = item.if_object();
        const auto* asset = object ? object->if_contains("asset") : nullptr;
        const auto* names = object ? object->if_contains("names") : nullptr;
        if (!asset || !asset->is_string() || !names || !names->is_array())
            return {};
        MerchantIconBrand brand{.asset = std::string(asset->get_string())};
        for (const boost::json::value& name : names->get_array()) {
            if (!name.is_string())
                return {};
            brand.names.emplace_back(name.get_string());
        }
        brands.push_back(std::move(brand));
    }
    return brands;
}

bool isLetterOrNumber(UChar32 c) {
    return u_hasBinaryProperty(c, UCHAR_ALPHABETIC) ||
           u_getIntPropertyValue(c, UCHAR_NUMERIC_TYPE) != U_NT_NONE;
}

// The first character, as a person sees one, of each of the first two words;
// words are runs of letters and numbers.
std::string initialsOf(std::string_view name) {
    const icu::UnicodeString text = text::toUnicode(name);
    thread_local std::unique_ptr<icu::BreakIterator> characters = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> iterator(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        return U_SUCCESS(status) ? std::move(iterator) : nullptr;
    }();
    icu::UnicodeString initials;
    if (!characters)
        return "?";
    characters->setText(text);
    bool inWord = false;
    int words = 0;
    for (int32_t start = characters->first(), end = characters->next();
         end != icu::BreakIterator::DONE && words < 2; start = end, end = characters->next()) {
        const bool wordCharacter = isLetterOrNumber(text.char32At(start));
        if (wordCharacter && !inWord) {
            initials.append(text, start, end - start);
            ++words;
        }
        inWord = wordCharacter;
    }
    if (initials.isEmpty())
        return "?";
    return text::uppercased(text::toUTF8(initials));
}

std::optional<std::filesystem::path> executableFolder() {
    std::error_code error;
    const fs::path executable = fs::read_symlink("/proc/self/exe", error);
    if (error)
        return std::nullopt;
    return executable.parent_path();
}

std::optional<fs::path> findBundle() {
    std::vector<fs::path> candidates;
    if (const auto folder = executableFolder()) {
        candidates.push_back(*folder / "Contents" / "Resources" / kBundleName);
        candidates.push_back(*folder / "Resources" / kBundleName);
        candidates.push_back(*folder / kBundleName);
        // Installed: the data folder beside the program's bin folder.
        candidates.push_back(*folder / ".." / "share" / "copperwick" / kBundleName);
    }
    candidates.push_back(fs::path(COPPERWICK_INSTALL_DATADIR) / "copperwick" / kBundleName);
    for (const fs::path& candidate : candidates) {
        std::error_code error;
        if (fs::is_directory(candidate, error))
            return candidate;
    }
    return std::nullopt;
}

}  // namespace

const MerchantIconCatalog& MerchantIconCatalog::shared() {
    static std::once_flag once;
    static const MerchantIconCatalog* catalog = nullptr;
    // Never destroyed, like the other shared tables.
    std::call_once(once, [] { catalog = new MerchantIconCatalog(findBundle()); });
    return *catalog;
}

MerchantIconCatalog::MerchantIconCatalog(std::optional<std::filesystem::path> bundle)
    : m_bundle(std::move(bundle)) {
    if (!m_bundle)
        return;
    for (const std::string_view folder : {kPreparedFolder, kBrandFolder}) {
        for (const MerchantIconBrand& brand : readBrands(*m_bundle / folder / "catalog.json")) {
            if (folder == kPreparedFolder)
                m_purposeAssets.insert(brand.asset);
            for (const std::string& name : brand.names)
                m_byName.emplace(fold(name), brand.asset);
        }
    }
}

std::string MerchantIconCatalog::fold(std::string_view name) {
    icu::UnicodeString text = text::toUnicode(name);
    text.findAndReplace(icu::UnicodeString(u'\u2019'), icu::UnicodeString(u'\''));
    text.foldCase();
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* nfd = icu::Normalizer2::getNFDInstance(status);
    const icu::Normalizer2* nfc = icu::Normalizer2::getNFCInstance(status);
    if (U_SUCCESS(status)) {
        // Diacritics are the marks that decomposition splits off.
        const icu::UnicodeString decomposed = nfd->normalize(text, status);
        icu::UnicodeString bare;
        for (int32_t i = 0; i < decomposed.length();) {
            const UChar32 c = decomposed.char32At(i);
            if (u_charType(c) != U_NON_SPACING_MARK)
                bare.append(c);
            i += U16_LENGTH(c);
        }
        // Recomposed, so that Hangul and the like read as they came.
        const icu::UnicodeString composed = nfc->normalize(bare, status);
        if (U_SUCCESS(status))
            text = composed;
    }
    icu::UnicodeString collapsed;
    bool pendingBlank = false;
    for (int32_t i = 0; i < text.length();) {
        const UChar32 c = text.char32At(i);
        i += U16_LENGTH(c);
        if (u_isUWhiteSpace(c)) {
            pendingBlank = !collapsed.isEmpty();
            continue;
        }
        if (pendingBlank)
            collapsed.append(u' ');
        pendingBlank = false;
        collapsed.append(c);
    }
    return text::toUTF8(collapsed);
}

MerchantIconDescriptor MerchantIconCatalog::descriptor(std::string_view name,
                                                       std::optional<std::string_view> categoryName,
                                                       std::optional<TransactionKind> kind) const {
    const std::string folded = fold(name);
    const bool transfer = kind == TransactionKind::transfer;
    MerchantIconDescriptor result{.initials = initialsOf(name)};

    if (transfer) {
        result.symbol = "arrow.left.arrow.right";
        result.tone = Tone::neutral;
    } else if (const Badge* demo = findBadge(kDemoSymbols, folded)) {
        result.symbol = std::string(demo->symbol);
        result.tone = demo->tone;
    } else {
        std::optional<std::string_view> category = categoryName;
        if (!category) {
            const auto& defaults = defaultCategories();
            if (const auto found = defaults.find(folded); found != defaults.end())
                category = found->second;
        }
        const Badge* badge = category ? findBadge(kCategorySymbols, fold(*category)) : nullptr;
        if (badge) {
            result.symbol = std::string(badge->symbol);
            result.tone = badge->tone;
        } else {
            result.tone = kind == TransactionKind::income ? Tone::forest : Tone::neutral;
        }
    }

    const icu::UnicodeString foldedText = text::toUnicode(folded);
    if (finds(*patterns().zelle, foldedText)) {
        result.logo = std::string(asset(PaymentService::zelle));
        return result;
    }
    for (const PaymentService service : allCases<PaymentService>()) {
        if (folded == fold(copperwick::name(service))) {
            result.logo = std::string(asset(service));
            return result;
        }
    }
    if (transfer) {
        result.logo = purposeAsset(folded).value_or(std::string(kPersonPayment));
        return result;
    }
    result.logo = brandAsset(folded);
    if (!result.logo)
        result.logo = purposeAsset(folded);
    return result;
}

MerchantIconDescriptor MerchantIconCatalog::descriptor(const LedgerTransaction& transaction,
                                                       const Ledger& ledger) const {
    const std::string name = ReportEngine::merchantIdentity(transaction, ledger).name;
    std::optional<std::string_view> categoryName;
    if (const LedgerCategory* category = ledger.category(transaction.categoryID))
        categoryName = category->name;
    return descriptor(name, categoryName, transaction.kind);
}

std::optional<std::filesystem::path> MerchantIconCatalog::logoURL(std::string_view asset) const {
    if (!m_bundle || asset.empty())
        return std::nullopt;
    const std::string_view folder =
        asset.starts_with(kPreparedPrefix) ? kPreparedFolder : kBrandFolder;
    fs::path file = *m_bundle / folder / (std::string(asset) + ".png");
    std::error_code error;
    if (!fs::is_regular_file(file, error))
        return std::nullopt;
    return file;
}

std::optional<std::string> MerchantIconCatalog::brandAsset(const std::string& folded) const {
    if (const auto found = m_byName.find(folded); found != m_byName.end())
        return found->second;
    const icu::UnicodeString text = text::toUnicode(folded);
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> matcher(patterns().storeNumber->matcher(text, status));
    if (U_FAILURE(status) || !matcher->find(status) || U_FAILURE(status))
        return std::nullopt;
    const int32_t start = matcher->start(status);
    if (U_FAILURE(status))
        return std::nullopt;
    const std::string rest = text::toUTF8(icu::UnicodeString(text, 0, start));
    if (const auto found = m_byName.find(rest); found != m_byName.end())
        return found->second;
    return std::nullopt;
}

std::optional<std::string> MerchantIconCatalog::purposeAsset(const std::string& folded) const {
    if (const auto found = m_byName.find(folded);
        found != m_byName.end() && m_purposeAssets.contains(found->second)) {
        return found->second;
    }
    const icu::UnicodeString text = text::toUnicode(folded);
    for (std::size_t i = 0; i < kPurposes.size(); ++i) {
        if (finds(*patterns().purposes[i], text))
            return std::string(kPurposes[i].asset);
    }
    return std::nullopt;
}

}  // namespace copperwick

std::size_t std::hash<copperwick::MerchantIconDescriptor>::operator()(
    const copperwick::MerchantIconDescriptor& descriptor) const noexcept {
    const std::hash<std::string> hashText;
    std::size_t seed = 0;
    const auto mix = [&seed](std::size_t value) {
        seed ^= value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2);
    };
    mix(descriptor.logo ? hashText(*descriptor.logo) : 1);
    mix(descriptor.symbol ? hashText(*descriptor.symbol) : 2);
    mix(hashText(descriptor.initials));
    mix(static_cast<std::size_t>(descriptor.tone));
    return seed;
}
