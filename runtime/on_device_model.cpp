#include "runtime/on_device_model.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>

#include "core/model/text.h"
#include "runtime/model_http.h"

namespace copperwick {

namespace json = boost::json;
using Clock = std::chrono::steady_clock;

namespace OnDeviceModelText {

std::string notAnswering(std::string_view address) {
    return "The local model at " + std::string(address) + " isn't answering.";
}

}  // namespace OnDeviceModelText

namespace {

// Shown to a person inside a sentence of ours: enough to tell what went
// wrong, never a page of a server's output.
constexpr std::size_t kServerWordsShown = 200;
constexpr std::size_t kReasonCharacters = 160;
constexpr std::size_t kExplanationCharacters = 600;
constexpr std::size_t kBankNameCharacters = 40;

// ---- The shapes asked for, with the guides the model reads as descriptions.

json::object field(std::string_view type, std::string_view guide) {
    return {{"type", type}, {"description", guide}};
}

json::object objectSchema(std::initializer_list<std::pair<std::string_view, json::object>> fields) {
    json::object properties;
    json::array required;
    for (const auto& [name, schema] : fields) {
        properties[name] = schema;
        required.push_back(json::string(name));
    }
    return {{"type", "object"},
            {"properties", std::move(properties)},
            {"required", std::move(required)},
            {"additionalProperties", false}};
}

json::object merchantGuessSchema() {
    return objectSchema({
        {"merchant", field("string",
                           "The merchant's common name, like Starbucks or Joe's Diner, or unknown "
                           "if you can't tell")},
        {"category", field("string", "Exactly one category name from the allowed list")},
        {"kind",
         field("string", "expense, income, transfer, or unknown if you can't tell what this is")},
        {"reason", field("string", "One short sentence explaining the choice")},
    });
}

json::object nameDraftSchema() {
    return objectSchema({
        {"name", field("string",
                       "The merchant's everyday name with normal capitals and punctuation, like "
                       "Joe's Coffee or BJ's Restaurant")},
    });
}

json::object layoutDraftSchema() {
    return objectSchema({
        {"headerRow", field("integer",
                            "The row number that holds the column names, or 0 if the file has no "
                            "row of column names")},
        {"dateColumn", field("integer", "Column number of the transaction date")},
        {"descriptionColumn",
         field("integer", "Column number of the description, payee or merchant text")},
        {"amountColumn", field("integer",
                               "Column number of a single amount column, or 0 if money in and "
                               "money out are in separate columns")},
        {"moneyOutColumn",
         field("integer", "Column number of money out (debits, withdrawals, charges), or 0")},
        {"moneyInColumn",
         field("integer", "Column number of money in (credits, deposits, payments), or 0")},
        {"postedDateColumn", field("integer", "Column number of a second, posting date, or 0")},
        {"statusColumn", field("integer", "Column number of a pending or posted status, or 0")},
        {"purchasesArePositive", field("boolean",
                                       "true if purchases are positive numbers in the single "
                                       "amount column, false if they are negative")},
        {"bankName",
         field("string", "The bank or card name if the file shows it, otherwise unknown")},
        {"accountType", field("string", "checking, savings, credit card, or unknown")},
    });
}

json::object explanationDraftSchema() {
    return objectSchema({
        {"explanation", field("string",
                              "Two or three plain sentences: what this charge most likely is, and "
                              "what to check if it looks unfamiliar")},
        {"confidence",
         field("string", "high if you recognize the merchant, low if you are guessing")},
    });
}

json::object narrativeDraftSchema() {
    json::object factIDs = field("array", "The ids of the facts this sentence uses, such as F1");
    factIDs["items"] = json::object{{"type", "string"}};
    json::object bullets = field("array", "Three to five short bullet points");
    bullets["items"] = objectSchema({
        {"text",
         field("string", "One sentence that uses only the given facts and copies amounts exactly")},
        {"factIDs", std::move(factIDs)},
    });
    return objectSchema({{"bullets", std::move(bullets)}});
}

json::object responseFormat(std::string_view name, json::object schema) {
    return {{"type", "json_schema"},
            {"json_schema", json::object{{"name", name}, {"strict", true}, {"schema", schema}}}};
}

json::object toolDefinition(const AskTool& tool) {
    json::object properties;
    json::array required;
    for (const auto& parameter : tool.parameters()) {
        properties[parameter.name] = field(
            parameter.type == ToolParameter::Type::integer ? "integer" : "string", parameter.guide);
        required.push_back(json::string(parameter.name));
    }
    return {
        {"type", "function"},
        {"function", json::object{{"name", tool.name()},
                                  {"description", tool.description()},
                                  {"parameters", json::object{{"type", "object"},
                                                              {"properties", properties},
                                                              {"required", required},
                                                              {"additionalProperties", false}}}}}};
}

// ---- Reading what came back. The server and the model are both outside
// the program: every field is looked for and its type checked.

// A server's or model's own words, safe to set inside a sentence of ours.
std::string shownWords(std::string_view words) {
    std::string cleaned = text::firstCharacters(text::trimmed(words), kServerWordsShown);
    for (char& c : cleaned) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            c = ' ';
    }
    return cleaned;
}

std::string missingField(std::string_view name) {
    return "the local model's answer had no \u201c" + std::string(name) + "\u201d";
}

std::string wrongType(std::string_view name) {
    return "the local model's answer gave \u201c" + std::string(name) + "\u201d in the wrong form";
}

const json::value& member(const json::object& object, std::string_view name) {
    const json::value* value = object.if_contains(name);
    if (!value || value->is_null())
        throw ModelError(missingField(name));
    return *value;
}

std::string stringField(const json::object& object, std::string_view name) {
    const json::value& value = member(object, name);
    if (!value.is_string())
        throw ModelError(wrongType(name));
    return std::string(value.get_string());
}

int integerField(const json::object& object, std::string_view name) {
    const json::value& value = member(object, name);
    constexpr int64_t kLow = std::numeric_limits<int>::min();
    constexpr int64_t kHigh = std::numeric_limits<int>::max();
    if (const auto* number = value.if_int64(); number && *number >= kLow && *number <= kHigh)
        return static_cast<int>(*number);
    if (const auto* number = value.if_uint64(); number && *number <= static_cast<uint64_t>(kHigh))
        return static_cast<int>(*number);
    // "3.0" is still a column number; "3.5" isn't.
    if (const auto* number = value.if_double();
        number && *number >= static_cast<double>(kLow) && *number <= static_cast<double>(kHigh) &&
        *number == static_cast<double>(static_cast<int64_t>(*number)))
        return static_cast<int>(*number);
    throw ModelError(wrongType(name));
}

bool booleanField(const json::object& object, std::string_view name) {
    const json::value& value = member(object, name);
    if (!value.is_bool())
        throw ModelError(wrongType(name));
    return value.get_bool();
}

const json::array& arrayField(const json::object& object, std::string_view name) {
    const json::value& value = member(object, name);
    if (!value.is_array())
        throw ModelError(wrongType(name));
    return value.get_array();
}

std::optional<json::value> parseJSON(std::string_view text) {
    std::error_code error;
    json::value value = json::parse(text, error);
    if (error)
        return std::nullopt;
    return value;
}

// Some models wrap their JSON in a Markdown code fence despite the schema.
std::string_view withoutFence(std::string_view content) {
    content = text::trimmed(content);
    if (content.substr(0, 3) != "```")
        return content;
    const auto lineEnd = content.find('\n');
    if (lineEnd == std::string_view::npos)
        return content;
    content.remove_prefix(lineEnd + 1);
    content = text::trimmed(content);
    if (content.size() >= 3 && content.substr(content.size() - 3) == "```")
        content.remove_suffix(3);
    return text::trimmed(content);
}

json::object structuredContent(const json::object& message) {
    const json::value* content = message.if_contains("content");
    if (!content || !content->is_string())
        throw ModelError("the local model's answer wasn't in the expected form");
    const auto parsed = parseJSON(withoutFence(content->get_string()));
    if (!parsed || !parsed->is_object())
        throw ModelError("the local model's answer wasn't in the expected form");
    return parsed->get_object();
}

// ---- One conversation's exchanges, under one deadline.

class Conversation {
  public:
    Conversation(const std::string& endpoint, std::string model, const ModelLimits& limits,
                 std::chrono::milliseconds limit, std::function<bool()> cancelled)
        : m_address(text::trimmed(endpoint)),
          m_model(std::move(model)),
          m_limits(limits),
          m_deadline(Clock::now() + limit),
          m_cancelled(std::move(cancelled)) {
        if (m_address.empty())
            throw ModelError("no local model is set up");
        // Checked again before every call, whatever was accepted when it was set.
        const auto endpointParsed = LoopbackEndpoint::parse(m_address);
        if (!endpointParsed)
            throw ModelError("the local model's address isn't on this computer");
        m_endpoint = *endpointParsed;
    }

    // The assistant's message of one chat completion.
    json::object chat(const json::array& messages, const json::object& extras) {
        if (m_model.empty())
            m_model = firstListedModel();
        json::object body{{"model", m_model}, {"messages", messages}, {"stream", false}};
        for (const auto& [key, value] : extras)
            body[key] = value;
        const auto reply = send("/chat/completions", json::serialize(body));
        const auto parsed = parseJSON(reply);
        const json::object* object = parsed ? parsed->if_object() : nullptr;
        const json::value* choices = object ? object->if_contains("choices") : nullptr;
        if (!choices || !choices->is_array() || choices->get_array().empty() ||
            !choices->get_array()[0].is_object())
            throw ModelError("the local model's answer couldn't be read");
        const json::value* message = choices->get_array()[0].get_object().if_contains("message");
        if (!message || !message->is_object())
            throw ModelError("the local model's answer couldn't be read");
        const json::object& result = message->get_object();
        if (const json::value* refusal = result.if_contains("refusal");
            refusal && refusal->is_string() && !text::trimmed(refusal->get_string()).empty())
            throw ModelError("the local model declined: " + shownWords(refusal->get_string()));
        return result;
    }

  private:
    std::string firstListedModel() {
        const auto reply = send("/models", std::nullopt);
        const auto parsed = parseJSON(reply);
        const json::object* object = parsed ? parsed->if_object() : nullptr;
        const json::value* data = object ? object->if_contains("data") : nullptr;
        if (data && data->is_array()) {
            for (const auto& entry : data->get_array()) {
                const json::value* id =
                    entry.is_object() ? entry.get_object().if_contains("id") : nullptr;
                if (id && id->is_string() && !id->get_string().empty())
                    return std::string(id->get_string());
            }
        }
        throw ModelError("the local model server has no model to run");
    }

    std::string send(std::string_view route, std::optional<std::string> body) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(m_deadline - Clock::now());
        if (left.count() <= 0)
            throw ModelTimeout();
        const auto reply = ModelHttp::send({.endpoint = m_endpoint,
                                            .route = std::string(route),
                                            .body = std::move(body),
                                            .timeLimit = left,
                                            .maxBytes = m_limits.replyBytes,
                                            .cancelled = m_cancelled});
        using Outcome = ModelHttp::Reply::Outcome;
        switch (reply.outcome) {
            case Outcome::answered:
                break;
            case Outcome::timedOut:
                throw ModelTimeout();
            case Outcome::unreachable:
                throw ModelError("the local model at " + m_address + " isn't answering");
            case Outcome::cancelled:
                throw ModelError("it was stopped");
            case Outcome::tooLarge:
                throw ModelError("the local model's answer was too long");
            case Outcome::refused:
                throw ModelError("the local model's address isn't on this computer");
            case Outcome::failed:
                throw ModelError("the connection to the local model failed: " + reply.detail);
        }
        if (reply.status < 200 || reply.status > 299)
            throw ModelError(statusWords(reply));
        return reply.body;
    }

    static std::string statusWords(const ModelHttp::Reply& reply) {
        // OpenAI-style servers put their reason in {"error": {"message": …}}
        // or {"error": "…"}.
        if (const auto parsed = parseJSON(reply.body); parsed && parsed->is_object()) {
            if (const json::value* error = parsed->get_object().if_contains("error")) {
                const json::value* message = error;
                if (error->is_object())
                    message = error->get_object().if_contains("message");
                if (message && message->is_string() &&
                    !text::trimmed(message->get_string()).empty())
                    return "the local model said: " + shownWords(message->get_string());
            }
        }
        return "the local model answered with status " + std::to_string(reply.status);
    }

    std::string m_address;
    LoopbackEndpoint m_endpoint;
    std::string m_model;
    const ModelLimits& m_limits;
    Clock::time_point m_deadline;
    std::function<bool()> m_cancelled;
};

json::array opening(std::string_view instructions, const std::string& prompt) {
    return {json::object{{"role", "system"}, {"content", instructions}},
            json::object{{"role", "user"}, {"content", prompt}}};
}

// The text of a tool call's arguments as the model sent them: a JSON object
// in a string, or now and then an object outright. Anything else is no
// arguments, which the lookup answers by saying what it needs.
json::object toolArguments(const json::value* arguments) {
    if (!arguments)
        return {};
    if (arguments->is_object())
        return arguments->get_object();
    if (arguments->is_string()) {
        if (auto parsed = parseJSON(arguments->get_string()); parsed && parsed->is_object())
            return std::move(parsed->get_object());
    }
    return {};
}

std::string lookupNames(const std::vector<AskTool>& tools) {
    std::string names;
    for (const auto& tool : tools)
        names += (names.empty() ? "" : ", ") + tool.name();
    return names;
}

}  // namespace

OnDeviceModel::OnDeviceModel(std::string endpoint, std::string model, ModelLimits limits,
                             std::function<bool()> cancelled)
    : m_endpoint(std::move(endpoint)),
      m_model(std::move(model)),
      m_limits(limits),
      m_cancelled(std::move(cancelled)) {}

OnDeviceModel OnDeviceModel::fromPreferences(const Preferences& preferences, ModelLimits limits) {
    return OnDeviceModel(preferences.stringValue(preference_keys::aiEndpoint).value_or(""),
                         preferences.stringValue(preference_keys::aiModel).value_or(""), limits);
}

OnDeviceModel OnDeviceModel::withCancellation(std::function<bool()> cancelled) const {
    OnDeviceModel copy = *this;
    copy.m_cancelled = std::move(cancelled);
    return copy;
}

std::optional<std::string> OnDeviceModel::unavailableReason() const {
    const std::string address(text::trimmed(m_endpoint));
    if (address.empty())
        return std::string(OnDeviceModelText::kNoAddress);
    const auto endpoint = LoopbackEndpoint::parse(address);
    if (!endpoint)
        return std::string(OnDeviceModelText::kNotAvailable);
    const auto reply = ModelHttp::send({.endpoint = *endpoint,
                                        .route = "/models",
                                        .timeLimit = m_limits.availability,
                                        .maxBytes = m_limits.replyBytes,
                                        .cancelled = m_cancelled});
    using Outcome = ModelHttp::Reply::Outcome;
    if (reply.outcome == Outcome::unreachable || reply.outcome == Outcome::timedOut)
        return OnDeviceModelText::notAnswering(address);
    if (reply.outcome != Outcome::answered || reply.status < 200 || reply.status > 299)
        return std::string(OnDeviceModelText::kNotAvailable);
    const auto parsed = parseJSON(reply.body);
    if (!parsed || !parsed->is_object())
        return std::string(OnDeviceModelText::kNotAvailable);
    if (m_model.empty()) {
        // Without a model name the first one listed is used; with none, none can be.
        const json::value* data = parsed->get_object().if_contains("data");
        if (!data || !data->is_array() || data->get_array().empty())
            return std::string(OnDeviceModelText::kNotAvailable);
    }
    return std::nullopt;
}

OnDeviceModel::Guess OnDeviceModel::guessMerchant(const std::string& prompt) const {
    Conversation conversation(m_endpoint, m_model, m_limits, m_limits.guessMerchant, m_cancelled);
    const auto content = structuredContent(conversation.chat(
        opening(OnDeviceModelText::kGuessMerchant, prompt),
        {{"response_format", responseFormat("MerchantGuess", merchantGuessSchema())}}));
    return {.merchant = stringField(content, "merchant"),
            .category = stringField(content, "category"),
            .kind = stringField(content, "kind"),
            .reason = text::firstCharacters(stringField(content, "reason"), kReasonCharacters)};
}

std::string OnDeviceModel::tidyName(const std::string& prompt) const {
    Conversation conversation(m_endpoint, m_model, m_limits, m_limits.tidyName, m_cancelled);
    const auto content = structuredContent(
        conversation.chat(opening(OnDeviceModelText::kTidyName, prompt),
                          {{"response_format", responseFormat("NameDraft", nameDraftSchema())}}));
    return stringField(content, "name");
}

LayoutGuess OnDeviceModel::proposeLayout(const std::string& prompt) const {
    Conversation conversation(m_endpoint, m_model, m_limits, m_limits.proposeLayout, m_cancelled);
    const auto content = structuredContent(conversation.chat(
        opening(OnDeviceModelText::kProposeLayout, prompt),
        {{"response_format", responseFormat("LayoutDraft", layoutDraftSchema())}}));
    LayoutGuess guess;
    guess.headerRow = integerField(content, "headerRow");
    guess.dateColumn = integerField(content, "dateColumn");
    guess.descriptionColumn = integerField(content, "descriptionColumn");
    guess.amountColumn = integerField(content, "amountColumn");
    guess.moneyOutColumn = integerField(content, "moneyOutColumn");
    guess.moneyInColumn = integerField(content, "moneyInColumn");
    guess.postedDateColumn = integerField(content, "postedDateColumn");
    guess.statusColumn = integerField(content, "statusColumn");
    guess.purchasesArePositive = booleanField(content, "purchasesArePositive");
    guess.bankName = text::firstCharacters(stringField(content, "bankName"), kBankNameCharacters);
    guess.accountType = LayoutProposal::accountType(stringField(content, "accountType"));
    return guess;
}

OnDeviceModel::Explanation OnDeviceModel::explain(const std::string& prompt) const {
    Conversation conversation(m_endpoint, m_model, m_limits, m_limits.explain, m_cancelled);
    const auto content = structuredContent(conversation.chat(
        opening(OnDeviceModelText::kExplain, prompt),
        {{"response_format", responseFormat("ExplanationDraft", explanationDraftSchema())}}));
    const std::string confidence = text::lowercased(stringField(content, "confidence"));
    return {
        .text = text::firstCharacters(stringField(content, "explanation"), kExplanationCharacters),
        .isConfident = confidence.find("high") != std::string::npos};
}

std::vector<Grounding::Bullet> OnDeviceModel::writeNarrative(const std::string& prompt) const {
    Conversation conversation(m_endpoint, m_model, m_limits, m_limits.writeNarrative, m_cancelled);
    const auto content = structuredContent(conversation.chat(
        opening(OnDeviceModelText::kWriteNarrative, prompt),
        {{"response_format", responseFormat("NarrativeDraft", narrativeDraftSchema())}}));
    std::vector<Grounding::Bullet> bullets;
    for (const auto& item : arrayField(content, "bullets")) {
        if (!item.is_object())
            throw ModelError(wrongType("bullets"));
        Grounding::Bullet bullet;
        bullet.text = stringField(item.get_object(), "text");
        for (const auto& id : arrayField(item.get_object(), "factIDs")) {
            if (!id.is_string())
                throw ModelError(wrongType("factIDs"));
            bullet.factIDs.emplace_back(id.get_string());
        }
        bullets.push_back(std::move(bullet));
    }
    return bullets;
}

std::string OnDeviceModel::answer(const std::string& question, const std::string& instructions,
                                  const std::vector<AskTool>& tools) const {
    Conversation conversation(m_endpoint, m_model, m_limits, m_limits.answer, m_cancelled);
    json::array definitions;
    for (const auto& tool : tools)
        definitions.push_back(toolDefinition(tool));
    const json::object extras{{"tools", definitions}};
    json::array messages = opening(instructions, question);
    for (int round = 0; round < m_limits.answerRounds; ++round) {
        const json::object message = conversation.chat(messages, extras);
        const json::value* calls = message.if_contains("tool_calls");
        if (!calls || !calls->is_array() || calls->get_array().empty()) {
            const json::value* content = message.if_contains("content");
            if (!content || !content->is_string() || text::trimmed(content->get_string()).empty())
                throw ModelError("the local model gave no answer");
            return std::string(text::trimmed(content->get_string()));
        }
        // The conversation goes on with the calls as the model made them,
        // each followed by its lookup's text.
        json::array asked;
        json::array answered;
        int index = 0;
        for (const auto& call : calls->get_array()) {
            const json::object* object = call.if_object();
            const json::value* function = object ? object->if_contains("function") : nullptr;
            const json::object* details = function ? function->if_object() : nullptr;
            const json::value* nameValue = details ? details->if_contains("name") : nullptr;
            const std::string name =
                nameValue && nameValue->is_string() ? std::string(nameValue->get_string()) : "";
            const json::value* idValue = object ? object->if_contains("id") : nullptr;
            const std::string id =
                idValue && idValue->is_string() && !idValue->get_string().empty()
                    ? std::string(idValue->get_string())
                    : "call-" + std::to_string(round) + "-" + std::to_string(index);
            const json::object arguments =
                toolArguments(details ? details->if_contains("arguments") : nullptr);

            std::string result;
            if (index >= m_limits.toolCallsPerRound) {
                result = "Error: too many lookups at once. Ask for fewer, one after another.";
            } else {
                const auto tool = std::find_if(tools.begin(), tools.end(),
                                               [&](const AskTool& t) { return t.name() == name; });
                result = tool == tools.end()
                             ? "Error: there is no lookup named \u201c" + shownWords(name) +
                                   "\u201d. Use one of: " + lookupNames(tools) + "."
                             : tool->call(arguments);
            }
            asked.push_back(json::object{
                {"id", id},
                {"type", "function"},
                {"function",
                 json::object{{"name", name}, {"arguments", json::serialize(arguments)}}}});
            answered.push_back(json::object{
                {"role", "tool"}, {"tool_call_id", id}, {"name", name}, {"content", result}});
            ++index;
        }
        const json::value* content = message.if_contains("content");
        messages.push_back(json::object{
            {"role", "assistant"},
            {"content", content && content->is_string() ? json::value(content->get_string())
                                                        : json::value("")},
            {"tool_calls", std::move(asked)}});
        for (auto& reply : answered)
            messages.push_back(std::move(reply));
    }
    throw ModelError("the local model kept looking things up without answering");
}

}  // namespace copperwick
