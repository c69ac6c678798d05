#include "cli/runtime_session.h"

#include <ostream>

#include <boost/json/serialize.hpp>

#include "cli/commands.h"

namespace copperwick::cli {

std::unique_ptr<LedgerRuntime> openRuntime(const CommandContext& context) {
    RuntimeOptions options;
    options.dataFolder = context.dataDir;
    return std::make_unique<LedgerRuntime>(options);
}

bool reportUnavailable(const LedgerRuntime& runtime, CommandContext& context) {
    if (runtime.hasStore())
        return false;
    context.err << runtime.errorMessage().value_or(std::string(LedgerRuntime::kNoStoreMessage))
                << '\n';
    context.exitCode = kExitFailure;
    return true;
}

bool reportFailedChange(const LedgerRuntime& runtime, CommandContext& context) {
    if (!runtime.errorMessage())
        return false;
    context.err << *runtime.errorMessage() << '\n';
    context.exitCode = kExitFailure;
    return true;
}

void reportNotes(const LedgerRuntime& runtime, CommandContext& context) {
    if (runtime.errorMessage())
        context.err << *runtime.errorMessage() << '\n';
}

void printJSON(CommandContext& context, const boost::json::value& value) {
    context.out << boost::json::serialize(value) << '\n';
}

}  // namespace copperwick::cli
