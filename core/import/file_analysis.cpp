#include "core/import/file_analysis.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "core/matching/merchant_text.h"

namespace copperwick {

namespace {

// A row's texts in one block: the length of what follows, then one slot per
// text in the order of `Slot`. A slot opens with a varint head, its length
// shifted left two bits over its kind:
//
//   absent        head 0, nothing follows
//   inline        the text's bytes follow
//   in raw text   a varint offset follows; the text stands in the raw text there
//   description   the normalized description is the description itself
//
// The raw text is always inline. Varints are little-endian base 128.
enum class Slot {
    rawText,
    description,
    bankMerchant,
    bankCategory,
    checkNumber,
    cardIdentifier,
    externalID,
    normalized,
};
constexpr std::size_t kSlotCount = 8;

enum Kind : uint64_t {
    kAbsent = 0,
    kInline = 1,
    kInRawText = 2,
    kDescription = 3,
};

std::size_t varintSize(uint64_t value) {
    std::size_t size = 1;
    while (value >= 0x80) {
        value >>= 7;
        ++size;
    }
    return size;
}

char* writeVarint(char* at, uint64_t value) {
    while (value >= 0x80) {
        *at++ = static_cast<char>(0x80 | (value & 0x7F));
        value >>= 7;
    }
    *at++ = static_cast<char>(value);
    return at;
}

uint64_t readVarint(const char*& at) {
    uint64_t value = 0;
    for (int shift = 0;; shift += 7) {
        const auto byte = static_cast<uint8_t>(*at++);
        value |= static_cast<uint64_t>(byte & 0x7F) << shift;
        if (byte < 0x80)
            return value;
    }
}

// The size of the whole block, its leading length included.
std::size_t blockSize(const char* block) {
    const char* at = block;
    const uint64_t rest = readVarint(at);
    return static_cast<std::size_t>(at - block) + static_cast<std::size_t>(rest);
}

// What one slot will hold, worked out before the block is written.
struct Planned {
    uint64_t kind = kAbsent;
    std::string_view text;
    std::size_t offset = 0;  // in the raw text, for kInRawText

    [[nodiscard]] std::size_t size() const {
        const std::size_t head = varintSize((text.size() << 2) | kind);
        if (kind == kInline)
            return head + text.size();
        if (kind == kInRawText)
            return head + varintSize(offset);
        return head;
    }
};

Planned plan(std::optional<std::string_view> text, std::string_view rawText) {
    if (!text)
        return {};
    const std::size_t offset = rawText.find(*text);
    if (offset == std::string_view::npos)
        return {kInline, *text};
    return {kInRawText, *text, offset};
}

std::optional<std::string_view> readSlot(const char* block, Slot wanted) {
    if (!block) {
        if (wanted == Slot::rawText || wanted == Slot::description || wanted == Slot::normalized)
            return std::string_view();
        return std::nullopt;
    }
    const char* at = block;
    readVarint(at);
    std::string_view rawText, description;
    for (std::size_t slot = 0; slot < kSlotCount; ++slot) {
        const uint64_t head = readVarint(at);
        const auto length = static_cast<std::size_t>(head >> 2);
        std::optional<std::string_view> text;
        switch (head & 3) {
            case kAbsent:
                break;
            case kInline:
                text = std::string_view(at, length);
                at += length;
                break;
            case kInRawText:
                text = rawText.substr(static_cast<std::size_t>(readVarint(at)), length);
                break;
            case kDescription:
                text = description;
                break;
        }
        if (static_cast<Slot>(slot) == wanted)
            return text;
        if (static_cast<Slot>(slot) == Slot::rawText)
            rawText = text.value_or(std::string_view());
        else if (static_cast<Slot>(slot) == Slot::description)
            description = text.value_or(std::string_view());
    }
    return std::nullopt;
}

std::unique_ptr<char[]> copyBlock(const std::unique_ptr<char[]>& block) {
    if (!block)
        return nullptr;
    const std::size_t size = blockSize(block.get());
    auto copy = std::make_unique_for_overwrite<char[]>(size);
    std::memcpy(copy.get(), block.get(), size);
    return copy;
}

}  // namespace

ParsedRow::ParsedRow(const ParsedRow& other)
    : line(other.line),
      amount(other.amount),
      occurrence(other.occurrence),
      date(other.date),
      postedDate(other.postedDate),
      status(other.status),
      m_texts(copyBlock(other.m_texts)) {}

ParsedRow& ParsedRow::operator=(const ParsedRow& other) {
    if (this != &other)
        *this = ParsedRow(other);
    return *this;
}

void ParsedRow::setTexts(const Texts& texts) {
    // The most repeated texts cost a few bytes each: bank columns mostly stand
    // in the raw text unchanged, and bank descriptions are mostly upper case
    // with single blanks already.
    const std::string normalized = MerchantText::normalize(texts.description);
    std::array<Planned, kSlotCount> slots;
    slots[0] = {kInline, texts.rawText};
    slots[1] = plan(texts.description, texts.rawText);
    slots[2] = plan(texts.bankMerchant, texts.rawText);
    slots[3] = plan(texts.bankCategory, texts.rawText);
    slots[4] = plan(texts.checkNumber, texts.rawText);
    slots[5] = plan(texts.cardIdentifier, texts.rawText);
    slots[6] = plan(texts.externalID, texts.rawText);
    slots[7] = normalized == texts.description ? Planned{kDescription}
                                               : plan(std::string_view(normalized), texts.rawText);

    std::size_t rest = 0;
    for (const auto& slot : slots)
        rest += slot.size();
    const std::size_t size = varintSize(rest) + rest;
    auto block = std::make_unique_for_overwrite<char[]>(size);
    char* at = writeVarint(block.get(), rest);
    for (const auto& slot : slots) {
        at = writeVarint(at, (slot.text.size() << 2) | slot.kind);
        if (slot.kind == kInline) {
            // An empty view may have no data at all.
            std::copy(slot.text.begin(), slot.text.end(), at);
            at += slot.text.size();
        } else if (slot.kind == kInRawText) {
            at = writeVarint(at, slot.offset);
        }
    }
    // Written before the old block goes: the texts may have come from it.
    m_texts = std::move(block);
}

std::string_view ParsedRow::rawText() const {
    return *readSlot(m_texts.get(), Slot::rawText);
}

std::string_view ParsedRow::description() const {
    return *readSlot(m_texts.get(), Slot::description);
}

std::optional<std::string_view> ParsedRow::bankMerchant() const {
    return readSlot(m_texts.get(), Slot::bankMerchant);
}

std::optional<std::string_view> ParsedRow::bankCategory() const {
    return readSlot(m_texts.get(), Slot::bankCategory);
}

std::optional<std::string_view> ParsedRow::checkNumber() const {
    return readSlot(m_texts.get(), Slot::checkNumber);
}

std::optional<std::string_view> ParsedRow::cardIdentifier() const {
    return readSlot(m_texts.get(), Slot::cardIdentifier);
}

std::optional<std::string_view> ParsedRow::externalID() const {
    return readSlot(m_texts.get(), Slot::externalID);
}

std::string_view ParsedRow::normalizedDescription() const {
    return *readSlot(m_texts.get(), Slot::normalized);
}

std::string ParsedRow::fingerprint() const {
    const std::string_view normalized = normalizedDescription();
    std::string out = date.iso();
    out += '|';
    out += std::to_string(amount);
    out += '|';
    out += normalized;
    return out;
}

bool operator==(const ParsedRow& a, const ParsedRow& b) {
    // The normalized description and the fingerprint follow from the rest.
    return a.line == b.line && a.date == b.date && a.postedDate == b.postedDate &&
           a.amount == b.amount && a.status == b.status && a.occurrence == b.occurrence &&
           a.rawText() == b.rawText() && a.description() == b.description() &&
           a.bankMerchant() == b.bankMerchant() && a.bankCategory() == b.bankCategory() &&
           a.checkNumber() == b.checkNumber() && a.cardIdentifier() == b.cardIdentifier() &&
           a.externalID() == b.externalID();
}

std::optional<LocalDate> FileAnalysis::firstDate() const {
    if (rows.empty())
        return std::nullopt;
    return std::min_element(rows.begin(), rows.end(),
                            [](const auto& a, const auto& b) { return a.date < b.date; })
        ->date;
}

std::optional<LocalDate> FileAnalysis::lastDate() const {
    if (rows.empty())
        return std::nullopt;
    return std::max_element(rows.begin(), rows.end(),
                            [](const auto& a, const auto& b) { return a.date < b.date; })
        ->date;
}

int64_t FileAnalysis::accountedLines() const {
    const int64_t header = profile && profile->hasHeader ? 1 : 0;
    return skippedLines + header + static_cast<int64_t>(rows.size()) +
           static_cast<int64_t>(issues.size()) + blankLines;
}

}  // namespace copperwick
