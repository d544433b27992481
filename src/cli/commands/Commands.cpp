#include "cli/commands/Commands.h"

#include "cli/ProviderLookup.h"

namespace scrivel::cli {

namespace {

using namespace Qt::StringLiterals;

// --base-url, shared by the commands that name a provider.
QCommandLineOption baseURLOption() {
    return QCommandLineOption(QStringLiteral("base-url"),
                              QStringLiteral("The base URL of a custom provider."),
                              QStringLiteral("URL"));
}

QList<Command> table() {
    using namespace commands;
    const QString providers = providerList();
    return {
        {u"rewrite"_s,
         u"Rewrites FILE (or standard input) with a preset and writes the result to standard "
         u"output. On a terminal the reply streams in on standard error."_s,
         u"[FILE]"_s,
         {QCommandLineOption(u"preset"_s, u"The preset to use (default: the active one)."_s,
                             u"NAME|ID"_s),
          QCommandLineOption(u"copy"_s, u"Also copy the result to the clipboard."_s)},
         {{{},
           u"[--preset NAME|ID] [--copy] [FILE]"_s,
           u"rewrite FILE or standard input"_s,
           rewrite}}},
        {u"presets"_s,
         u"Lists and manages presets and packs."_s,
         u"[use NAME|ID | edit NAME|ID | export [NAME|ID...] FILE | import FILE | packs | "
         u"add-pack NAME]"_s,
         {QCommandLineOption(u"force"_s, u"export: replace FILE if it exists."_s),
          QCommandLineOption(u"model"_s, u"edit: the model to use."_s, u"MODEL"_s),
          baseURLOption()},
         {{{}, {}, u"list the presets (* marks the active one)"_s, listPresets},
          {u"use"_s, u"NAME|ID"_s, u"make a preset active"_s, usePreset},
          {u"edit"_s, u"NAME|ID [--model MODEL] [--base-url URL]"_s,
           u"change a preset's model or base URL"_s, editPreset},
          {u"export"_s, u"[NAME|ID...] FILE [--force]"_s, u"export presets as a pack"_s,
           exportPresets},
          {u"import"_s, u"FILE"_s, u"import a pack"_s, importPack},
          {u"packs"_s, {}, u"list the packs that ship with Scrivel"_s, listPacks},
          {u"add-pack"_s, u"NAME"_s, u"add a shipped pack's presets as copies"_s, addPack}}},
        {u"key"_s,
         u"Saves, deletes or checks the API key of a provider. 'key set' reads the key from "
         u"standard input (without echo on a terminal); keys are never printed. Providers: %1."_s
             .arg(providers),
         u"set|delete|status PROVIDER"_s,
         {baseURLOption()},
         {{{},
           u"set|delete|status PROVIDER [--base-url URL]"_s,
           u"manage an API key (set reads it from stdin)"_s,
           manageKey}}},
        {u"models"_s,
         u"Lists a provider's chat models, sorted, using the stored key. Providers: %1."_s.arg(
             providers),
         u"PROVIDER"_s,
         {baseURLOption()},
         {{{}, u"PROVIDER [--base-url URL]"_s, u"list a provider's chat models"_s, listModels}}},
        {u"status"_s,
         u"Shows whether the active preset can run. Exits with 3 when it cannot, and with 1 "
         u"when its key could not be read from the key store."_s,
         {},
         {},
         {{{}, {}, u"the active preset's readiness"_s, showStatus}}},
    };
}

} // namespace

const QList<Command>& commandTable() {
    static const QList<Command> all = table();
    return all;
}

} // namespace scrivel::cli
