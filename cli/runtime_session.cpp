#include "cli/runtime_session.h"

#include <ostream>

#include <boost/json/serialize.hpp>

#include "cli/commands.h"

namespace copperwick::cli {

void RuntimeCloser::operator()(LedgerRuntime* runtime) const {
    // The data file is closed properly either way; only the memory may be left behind.
    runtime->close();
    CommandMemory{processEnds}(runtime);
}

OpenRuntime openRuntime(const CommandContext& context) {
    RuntimeOptions options;
    // A command asks for the keys it needs when it needs them.
    options.warmMerchantKeys = false;
    // And ends before it would read the file again.
    options.directImportWrites = true;
    const RuntimeCloser closer{context.processEnds};
    if (!context.demo) {
        options.dataFolder = context.dataDir;
        return {new LedgerRuntime(options), closer};
    }
    // The demo makes its own temporary folder, whatever --data-dir says, and
    // takes it away again when the command ends. Said on stderr so that
    // --json output stays one value.
    options.demo = true;
    OpenRuntime runtime{new LedgerRuntime(options), closer};
    context.err << "Demo workspace: " << runtime->dataFolder().string() << '\n';
    return runtime;
}

bool reportUnavailable(const LedgerRuntime& runtime, CommandContext& context) {
    if (runtime.hasStore())
        return false;
    context.err << runtime.errorMessage().value_or("Copperwick couldn't open its data file.")
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
