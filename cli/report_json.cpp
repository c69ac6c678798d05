#include "cli/report_json.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "core/model/record_json.h"

namespace copperwick::cli::report_json {

namespace {

using boost::json::array;
using boost::json::object;
using boost::json::value;

template <typename T>
array ids(const std::vector<T>& list) {
    array result;
    for (const auto& id : list)
        result.push_back(value(id.text()));
    return result;
}

template <typename T>
array each(const std::vector<T>& list) {
    array result;
    for (const auto& item : list)
        result.push_back(toJSON(item));
    return result;
}

array texts(const std::vector<std::string>& list) {
    array result;
    for (const auto& text : list)
        result.push_back(value(text));
    return result;
}

array uuidSet(const std::set<Uuid>& set) {
    array result;
    for (const auto& id : set)
        result.push_back(value(id.text()));
    return result;
}

value merchantLine(const MerchantLine& line) {
    return object{{"id", line.id},
                  {"name", line.name},
                  {"amount", line.amount},
                  {"count", line.count},
                  {"transactionIDs", ids(line.transactionIDs)}};
}

array merchantLines(const std::vector<MerchantLine>& lines) {
    array result;
    for (const auto& line : lines)
        result.push_back(merchantLine(line));
    return result;
}

value categoryLine(const CategoryLine& line) {
    object result{{"id", line.id}};
    if (line.categoryID)
        result["categoryID"] = line.categoryID->text();
    result["name"] = line.name;
    result["colorIndex"] = line.colorIndex;
    result["amount"] = line.amount;
    result["refunds"] = line.refunds;
    result["count"] = line.count;
    result["merchants"] = merchantLines(line.merchants);
    result["transactionIDs"] = ids(line.transactionIDs);
    return result;
}

value acknowledgement(const DataNote::Acknowledgement& answer) {
    return std::visit(
        [](const auto& a) -> value {
            using T = std::decay_t<decltype(a)>;
            if constexpr (std::is_same_v<T, DataNote::UpToDate>)
                return object{{"upToDate", object{{"accountID", a.accountID.text()},
                                                  {"through", a.through.iso()}}}};
            else if constexpr (std::is_same_v<T, DataNote::HistoryStart>)
                return object{{"historyStart",
                               object{{"accountID", a.accountID.text()}, {"on", a.on.iso()}}}};
            else if constexpr (std::is_same_v<T, DataNote::RarelyUsed>)
                return object{{"rarelyUsed", object{{"accountID", a.accountID.text()}}}};
            else
                return object{{"dismiss", object{{"key", a.key}}}};
        },
        answer);
}

}  // namespace

value toJSON(const ReportFilter& filter) {
    return object{{"span", record_json::toJSON(filter.span)},
                  {"personIDs", uuidSet(filter.personIDs)},
                  {"accountIDs", uuidSet(filter.accountIDs)},
                  {"currency", filter.currency},
                  {"wholeHousehold", filter.wholeHousehold},
                  {"includeShared", filter.includeShared},
                  {"includeUnassigned", filter.includeUnassigned},
                  {"peopleMode", rawValue(filter.peopleMode)}};
}

value toJSON(const DataNote& note) {
    object result{{"id", note.id}, {"severity", rawValue(note.severity)}, {"text", note.text}};
    if (note.acknowledgement)
        result["acknowledgement"] = acknowledgement(*note.acknowledgement);
    return result;
}

value toJSON(const Report& report) {
    object result{{"filter", toJSON(report.filter)},
                  {"scopeLabel", report.scopeLabel},
                  {"income", report.income},
                  {"spending", report.spending},
                  {"refunds", report.refunds}};
    array categories;
    for (const auto& line : report.categories)
        categories.push_back(categoryLine(line));
    result["categories"] = std::move(categories);
    result["incomeSources"] = merchantLines(report.incomeSources);
    result["topMerchants"] = merchantLines(report.topMerchants);
    array months;
    for (const auto& month : report.months)
        months.push_back(object{{"monthKey", month.monthKey},
                                {"income", month.income},
                                {"spending", month.spending},
                                {"net", month.net()}});
    result["months"] = std::move(months);
    result["transferCount"] = report.transferCount;
    result["transferVolume"] = report.transferVolume;
    result["unknownCount"] = report.unknownCount;
    result["unknownIn"] = report.unknownIn;
    result["unknownOut"] = report.unknownOut;
    result["unknownIDs"] = ids(report.unknownIDs);
    result["pendingCount"] = report.pendingCount;
    result["pendingTotal"] = report.pendingTotal;
    result["includedIDs"] = ids(report.includedIDs);
    result["aiFiledIDs"] = ids(report.aiFiledIDs);
    result["notes"] = each(report.notes);
    result["accountNames"] = texts(report.accountNames);
    result["giftsReceived"] = report.giftsReceived;
    result["savings"] = report.savings();
    if (const auto rate = report.savingsRateTenths())
        result["savingsRateTenths"] = *rate;
    result["isComplete"] = report.isComplete();
    return result;
}

value toJSON(const ReportComparison& comparison) {
    array changes;
    for (const auto& change : comparison.categoryChanges) {
        object line{{"id", change.id},
                    {"name", change.name},
                    {"current", change.current},
                    {"previous", change.previous},
                    {"change", change.change()}};
        if (const auto tenths = change.changeTenths())
            line["changeTenths"] = *tenths;
        changes.push_back(std::move(line));
    }
    return object{{"current", toJSON(comparison.current)},
                  {"previous", toJSON(comparison.previous)},
                  {"categoryChanges", std::move(changes)},
                  {"spendingChange", comparison.spendingChange()},
                  {"incomeChange", comparison.incomeChange()}};
}

value toJSON(const BudgetLine& line) {
    object result{{"categoryID", line.categoryID.text()},
                  {"name", line.name},
                  {"colorIndex", line.colorIndex},
                  {"budgeted", line.budgeted},
                  {"spent", line.spent},
                  {"remaining", line.remaining()},
                  {"isOver", line.isOver()}};
    if (const auto used = line.usedTenths())
        result["usedTenths"] = *used;
    return result;
}

value toJSON(const RecurringCharge& charge) {
    return object{{"id", charge.id},
                  {"merchantName", charge.merchantName},
                  {"cadence", rawValue(charge.cadence)},
                  {"typicalAmount", charge.typicalAmount},
                  {"lastAmount", charge.lastAmount},
                  {"previousAmount", charge.previousAmount},
                  {"lastDate", charge.lastDate.iso()},
                  {"nextExpected", charge.nextExpected.iso()},
                  {"count", charge.count},
                  {"isActive", charge.isActive},
                  {"transactionIDs", ids(charge.transactionIDs)},
                  {"priceChanged", charge.priceChanged()}};
}

value toJSON(const UnusualCharge& charge) {
    object result{{"transactionID", charge.transactionID.text()},
                  {"merchantName", charge.merchantName},
                  {"date", charge.date.iso()},
                  {"amount", charge.amount}};
    if (charge.usualAmount)
        result["usualAmount"] = *charge.usualAmount;
    result["reason"] = charge.reason;
    return result;
}

value toJSON(const ReportBundle& bundle) {
    object result{{"filter", toJSON(bundle.filter)},
                  {"report", toJSON(bundle.report())},
                  {"comparison", toJSON(bundle.comparison)},
                  {"budgets", each(bundle.budgets)}};
    if (const auto& goal = bundle.savingsGoal)
        result["savingsGoal"] =
            object{{"months", goal->months},         {"saved", goal->saved},
                   {"target", goal->target},         {"currency", goal->currency},
                   {"isReached", goal->isReached()}, {"title", goal->title()}};
    if (const auto& allowance = bundle.allowance)
        result["allowance"] = object{{"personName", allowance->personName},
                                     {"allowance", allowance->allowance},
                                     {"left", allowance->left}};
    result["recurring"] = each(bundle.recurring);
    result["unusual"] = each(bundle.unusual);
    result["zelle"] = toJSON(bundle.zelle);
    result["payments"] = toJSON(bundle.payments);
    return result;
}

value toJSON(const PaymentActivity& activity) {
    array lines;
    for (const auto& line : activity.lines)
        lines.push_back(object{{"id", line.id},
                               {"name", line.name},
                               {"service", rawValue(line.service)},
                               {"sent", line.sent},
                               {"received", line.received},
                               {"net", line.net()},
                               {"transactionIDs", ids(line.transactionIDs)},
                               {"howCounted", texts(line.howCounted)}});
    return object{{"lines", std::move(lines)},
                  {"sent", activity.sent},
                  {"received", activity.received},
                  {"net", activity.net()},
                  {"transactionIDs", ids(activity.transactionIDs)}};
}

value toJSON(const ZelleSummary& summary) {
    array lines;
    for (const auto& line : summary.lines)
        lines.push_back(object{{"id", line.id},
                               {"name", line.name},
                               {"received", line.received},
                               {"sent", line.sent},
                               {"count", line.count},
                               {"howCounted", texts(line.howCounted)},
                               {"transactionIDs", ids(line.transactionIDs)}});
    const HouseholdMoney& household = summary.household;
    return object{{"lines", std::move(lines)},
                  {"received", summary.received},
                  {"sent", summary.sent},
                  {"transactionIDs", ids(summary.transactionIDs)},
                  {"household", object{{"sent", household.sent},
                                       {"received", household.received},
                                       {"sentIDs", ids(household.sentIDs)},
                                       {"receivedIDs", ids(household.receivedIDs)}}}};
}

value toJSON(const AccountFreshness& freshness) {
    object result{{"account", record_json::toJSON(freshness.account)}};
    if (freshness.lastImportedAt)
        result["lastImportedAt"] = record_json::toJSON(*freshness.lastImportedAt);
    if (freshness.latestTransaction)
        result["latestTransaction"] = freshness.latestTransaction->iso();
    result["state"] = rawValue(freshness.state);
    return result;
}

}  // namespace copperwick::cli::report_json
