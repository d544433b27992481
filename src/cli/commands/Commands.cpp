#include "cli/commands/Commands.h"

#include "cli/CliText.h"
#include "cli/ProviderLookup.h"

namespace scrivel::cli {

namespace {

using namespace Qt::StringLiterals;

// --base-url, shared by the commands that name a provider.
QCommandLineOption baseURLOption() {
    return QCommandLineOption(QStringLiteral("base-url"),
                              CliText::tr("The base URL of a custom provider."),
                              QStringLiteral("URL"));
}

QList<Command> table() {
    using namespace commands;
    const QString providers = providerList();
    return {
        {u"rewrite"_s,
         CliText::tr("Rewrites FILE (or standard input) with a preset and writes the result to "
                     "standard output. On a terminal the reply streams in on standard error."),
         u"[FILE]"_s,
         {QCommandLineOption(u"preset"_s,
                             CliText::tr("The preset to use (default: the active one)."),
                             u"NAME|ID"_s),
          QCommandLineOption(u"copy"_s, CliText::tr("Also copy the result to the clipboard."))},
         {{{},
           u"[--preset NAME|ID] [--copy] [FILE]"_s,
           CliText::tr("rewrite FILE or standard input"),
           rewrite}}},
        {u"presets"_s,
         CliText::tr("Lists and manages presets and packs."),
         u"[use NAME|ID | edit NAME|ID | export [NAME|ID...] FILE | import FILE | packs | "
         u"add-pack NAME]"_s,
         {QCommandLineOption(u"force"_s, CliText::tr("export: replace FILE if it exists.")),
          QCommandLineOption(u"model"_s, CliText::tr("edit: the model to use."), u"MODEL"_s),
          baseURLOption()},
         {{{}, {}, CliText::tr("list the presets (* marks the active one)"), listPresets},
          {u"use"_s, u"NAME|ID"_s, CliText::tr("make a preset active"), usePreset},
          {u"edit"_s, u"NAME|ID [--model MODEL] [--base-url URL]"_s,
           CliText::tr("change a preset's model or base URL"), editPreset},
          {u"export"_s, u"[NAME|ID...] FILE [--force]"_s, CliText::tr("export presets as a pack"),
           exportPresets},
          {u"import"_s, u"FILE"_s, CliText::tr("import a pack"), importPack},
          {u"packs"_s, {}, CliText::tr("list the packs that ship with Scrivel"), listPacks},
          {u"add-pack"_s, u"NAME"_s, CliText::tr("add a shipped pack's presets as copies"),
           addPack}}},
        {u"key"_s,
         CliText::tr(
             "Saves, deletes or checks the API key of a provider. 'key set' reads the key from "
             "standard input (without echo on a terminal); keys are never printed. Providers: %1.")
             .arg(providers),
         u"set|delete|status PROVIDER"_s,
         {baseURLOption()},
         {{{},
           u"set|delete|status PROVIDER [--base-url URL]"_s,
           CliText::tr("manage an API key (set reads it from stdin)"),
           manageKey}}},
        {u"models"_s,
         CliText::tr("Lists a provider's chat models, sorted, using the stored key. Providers: %1.")
             .arg(providers),
         u"PROVIDER"_s,
         {baseURLOption()},
         {{{},
           u"PROVIDER [--base-url URL]"_s,
           CliText::tr("list a provider's chat models"),
           listModels}}},
        {u"status"_s,
         CliText::tr("Shows whether the active preset can run. Exits with 3 when it cannot, and "
                     "with 1 when its key could not be read from the key store."),
         {},
         {},
         {{{}, {}, CliText::tr("the active preset's readiness"), showStatus}}},
    };
}

} // namespace

const QList<Command>& commandTable() {
    static const QList<Command> all = table();
    return all;
}

} // namespace scrivel::cli
