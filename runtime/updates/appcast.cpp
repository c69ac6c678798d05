#include "runtime/updates/appcast.h"

#include <memory>

#include <expat.h>

#include "runtime/updates/update_transfer.h"
#include "runtime/updates/update_version.h"

namespace copperwick {

namespace {

// Expat joins a namespace and a local name with this, which no name holds.
constexpr char kSeparator = '|';

struct ParserDeleter {
    void operator()(XML_ParserStruct* parser) const { XML_ParserFree(parser); }
};

// An item as read, before it is held to what an offer needs.
struct ItemDraft {
    AppcastItem item;
    std::string type;
    std::string lengthText;
    // Whether the enclosure's attributes named each of these, which then
    // win over the item's elements.
    bool enclosureVersion = false;
    bool enclosureShortVersion = false;
    bool enclosureSignature = false;
};

// A whole number above zero, as the enclosure's length must be.
std::optional<uint64_t> positiveLength(std::string_view text) {
    if (text.empty() || text.size() > 19)
        return std::nullopt;
    uint64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = value * 10 + static_cast<uint64_t>(c - '0');
    }
    return value > 0 ? std::optional(value) : std::nullopt;
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos)
        return {};
    const auto last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

class Reader {
  public:
    explicit Reader(XML_Parser parser) : m_parser(parser) {}

    static void XMLCALL start(void* context, const XML_Char* name, const XML_Char** attributes) {
        static_cast<Reader*>(context)->opened(name, attributes);
    }
    static void XMLCALL end(void* context, const XML_Char*) {
        static_cast<Reader*>(context)->closed();
    }
    static void XMLCALL text(void* context, const XML_Char* data, int length) {
        auto* reader = static_cast<Reader*>(context);
        if (reader->m_collecting)
            reader->m_text.append(data, static_cast<std::size_t>(length));
    }
    static void XMLCALL doctype(void* context, const XML_Char*, const XML_Char*, const XML_Char*,
                                int) {
        auto* reader = static_cast<Reader*>(context);
        reader->m_refused = true;
        XML_StopParser(reader->m_parser, XML_FALSE);
    }

    [[nodiscard]] bool refused() const { return m_refused; }
    [[nodiscard]] bool sawRoot() const { return m_sawRoot; }
    [[nodiscard]] Appcast appcast() && { return std::move(m_appcast); }

  private:
    // The element's name relative to the feed: "item", or "sparkle:version"
    // for one in Sparkle's namespace, whatever its prefix; "" for others.
    static std::string localName(std::string_view name) {
        const auto separator = name.rfind(kSeparator);
        if (separator == std::string_view::npos)
            return std::string(name);
        if (name.substr(0, separator) == Appcast::kSparkleNamespace)
            return "sparkle:" + std::string(name.substr(separator + 1));
        return {};
    }

    void opened(const XML_Char* rawName, const XML_Char** attributes) {
        const std::string name = localName(rawName);
        const std::size_t depth = m_path.size();
        m_path.push_back(name);
        if (depth == 0) {
            if (name != "rss") {
                m_refused = true;
                XML_StopParser(m_parser, XML_FALSE);
                return;
            }
            m_sawRoot = true;
            return;
        }
        if (depth == 2 && name == "item" && m_path[1] == "channel") {
            m_draft = ItemDraft{};
            return;
        }
        if (depth != 3 || !m_draft)
            return;
        if (name == "enclosure") {
            for (const XML_Char** pair = attributes; pair[0]; pair += 2)
                enclosureAttribute(localName(pair[0]), pair[1]);
            return;
        }
        if (name == "title" || name == "description" || name == "sparkle:version" ||
            name == "sparkle:shortVersionString" || name == "sparkle:edSignature") {
            m_collecting = true;
            m_text.clear();
        }
    }

    void enclosureAttribute(const std::string& name, std::string value) {
        ItemDraft& draft = *m_draft;
        if (name == "url") {
            draft.item.url = std::move(value);
        } else if (name == "length") {
            draft.lengthText = std::move(value);
        } else if (name == "type") {
            draft.type = std::move(value);
        } else if (name == "sparkle:version") {
            draft.item.version = std::move(value);
            draft.enclosureVersion = true;
        } else if (name == "sparkle:shortVersionString") {
            draft.item.shortVersion = std::move(value);
            draft.enclosureShortVersion = true;
        } else if (name == "sparkle:edSignature") {
            draft.item.signature = std::move(value);
            draft.enclosureSignature = true;
        }
    }

    void closed() {
        const std::string name = std::move(m_path.back());
        m_path.pop_back();
        const std::size_t depth = m_path.size();
        if (depth == 3 && m_collecting && m_draft) {
            m_collecting = false;
            std::string value(trimmed(m_text));
            AppcastItem& item = m_draft->item;
            if (name == "title")
                item.title = std::move(value);
            else if (name == "description")
                item.description = std::move(value);
            else if (name == "sparkle:version" && !m_draft->enclosureVersion)
                item.version = std::move(value);
            else if (name == "sparkle:shortVersionString" && !m_draft->enclosureShortVersion)
                item.shortVersion = std::move(value);
            else if (name == "sparkle:edSignature" && !m_draft->enclosureSignature)
                item.signature = std::move(value);
        } else if (depth == 2 && name == "item" && m_draft) {
            finishItem();
        }
    }

    void finishItem() {
        ItemDraft draft = std::move(*m_draft);
        m_draft.reset();
        const auto length = positiveLength(trimmed(draft.lengthText));
        draft.item.url = std::string(trimmed(draft.item.url));
        draft.item.version = std::string(trimmed(draft.item.version));
        draft.item.shortVersion = std::string(trimmed(draft.item.shortVersion));
        draft.item.signature = std::string(trimmed(draft.item.signature));
        if (!length || trimmed(draft.type) != Appcast::kPackageType ||
            !update_version::parse(draft.item.version) || draft.item.signature.empty() ||
            !UpdateTransfer::isAllowedAddress(draft.item.url))
            return;
        draft.item.length = *length;
        m_appcast.items.push_back(std::move(draft.item));
    }

    XML_Parser m_parser;
    std::vector<std::string> m_path;
    std::optional<ItemDraft> m_draft;
    bool m_collecting = false;
    std::string m_text;
    bool m_refused = false;
    bool m_sawRoot = false;
    Appcast m_appcast;
};

}  // namespace

std::optional<Appcast> Appcast::parse(std::string_view xml) {
    if (xml.size() > kMaxFeedBytes)
        return std::nullopt;
    const std::unique_ptr<XML_ParserStruct, ParserDeleter> parser(
        XML_ParserCreateNS(nullptr, kSeparator));
    if (!parser)
        return std::nullopt;
    Reader reader(parser.get());
    XML_SetUserData(parser.get(), &reader);
    XML_SetElementHandler(parser.get(), &Reader::start, &Reader::end);
    XML_SetCharacterDataHandler(parser.get(), &Reader::text);
    XML_SetStartDoctypeDeclHandler(parser.get(), &Reader::doctype);
    const XML_Status status =
        XML_Parse(parser.get(), xml.data(), static_cast<int>(xml.size()), XML_TRUE);
    if (status != XML_STATUS_OK || reader.refused() || !reader.sawRoot())
        return std::nullopt;
    return std::move(reader).appcast();
}

std::optional<AppcastItem> Appcast::newestAfter(std::string_view runningVersion) const {
    const AppcastItem* newest = nullptr;
    for (const AppcastItem& item : items) {
        if (!update_version::isNewer(item.version, runningVersion))
            continue;
        if (!newest || update_version::isNewer(item.version, newest->version))
            newest = &item;
    }
    if (!newest)
        return std::nullopt;
    return *newest;
}

}  // namespace copperwick
