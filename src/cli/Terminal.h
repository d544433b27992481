#pragma once

#include <QByteArray>
#include <QString>
#include <cstdio>
#include <functional>
#include <optional>

namespace scrivel::cli {

// Small terminal helpers for scrivel-cli.
namespace Terminal {

bool isTerminal(FILE* stream);
void write(FILE* stream, const QString& text);
// A message on standard error, and on the next line the command that fixes
// it, if any.
void writeProblem(const QString& message, const QString& hint);
// Reads all of standard input (or a file); nothing when it cannot be read.
std::optional<QByteArray> readAll(const QString& pathOrDash);
// Reads one line from standard input; on a terminal, prompts on standard
// error and does not echo what is typed.
std::optional<QString> readSecretLine(const QString& prompt);
// Calls handler (on the event loop) when SIGINT or SIGTERM arrives.
void onInterrupt(std::function<void()> handler);

} // namespace Terminal

} // namespace scrivel::cli
