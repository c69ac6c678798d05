#include "cli/runtime_session.h"

#include <ostream>

#include <boost/json/serialize.hpp>

#include "cli/commands.h"
#include "core/store/store_error.h"

namespace copperwick::cli {

namespace {

// Why the data file couldn't be opened, said as such. The store words a
// failed statement as a failed save, which is right during a change; at
// opening, a file that isn't a database or can't be written to was only
// being opened, and a command that reads nothing but still hears "couldn't
// save" is misled.
std::string openingFailure(const std::optional<std::string>& message) {
    const std::string opening = StoreError::open({}).what();
    if (!message)
        return opening.substr(0, opening.find_last_not_of(": ") + 1) + ".";
    const std::string saving = StoreError::sql({}).what();
    if (message->starts_with(saving))
        return opening + message->substr(saving.size());
    return *message;
}

}  // namespace

std::unique_ptr<LedgerRuntime> openRuntime(const CommandContext& context) {
    RuntimeOptions options;
    if (!context.demo) {
        options.dataFolder = context.dataDir;
        return std::make_unique<LedgerRuntime>(options);
    }
    // The demo makes its own temporary folder, whatever --data-dir says, and
    // takes it away again when the command ends. Said on stderr so that
    // --json output stays one value.
    options.demo = true;
    auto runtime = std::make_unique<LedgerRuntime>(options);
    context.err << "Demo workspace: " << runtime->dataFolder().string() << '\n';
    return runtime;
}

bool reportUnavailable(const LedgerRuntime& runtime, CommandContext& context) {
    if (runtime.hasStore())
        return false;
    context.err << openingFailure(runtime.errorMessage()) << '\n';
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
