#include "cli/commands/Commands.h"

#include "cli/Await.h"
#include "cli/CliSession.h"
#include "cli/CliText.h"
#include "cli/ExitCode.h"
#include "cli/Hints.h"
#include "cli/ProviderLookup.h"
#include "cli/Terminal.h"
#include "platform/linux/LinuxServices.h"

namespace scrivel::cli::commands {

using Terminal::write;

// The provider's chat models, one a line, asked with the stored key.
int listModels(Invocation& call) {
    if (call.words.size() != 1) {
        write(stderr, usageLine(QStringLiteral("scrivel-cli models PROVIDER [--base-url URL]")));
        return usageError;
    }
    const auto endpoint =
        findEndpoint(call.words[0], call.options.value(QStringLiteral("base-url")));
    if (!endpoint) {
        write(stderr, endpoint.error() + QStringLiteral("\n"));
        return usageError;
    }
    Future<OpenAICompatibleProvider::ModelsResult> fetch =
        call.session.services().hub().client(*endpoint).fetchModels(EndpointCredential::stored());
    bool interrupted = false;
    const auto result = await(fetch, &interrupted);
    if (interrupted || !result) {
        fetch.cancel();
        write(stderr, CliText::tr("Cancelled.") + QLatin1Char('\n'));
        return cancelled;
    }
    if (!*result) {
        Terminal::writeProblem(result->error().message(),
                               Hints::forFailure(result->error(), *endpoint));
        return exitCodeFor(result->error());
    }
    for (const QString& model : **result)
        write(stdout, model + QStringLiteral("\n"));
    return success;
}

} // namespace scrivel::cli::commands
