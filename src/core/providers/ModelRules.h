#pragma once

#include <QStringList>
#include <QStringView>

namespace scrivel {

// Judgements about a model made from its identifier alone. Plain substring
// tests on the lower-cased identifier: no word boundaries, so a marker
// anywhere inside a longer name counts.

// The markers of models that accept a reasoning-effort setting, in order.
const QStringList& reasoningMarkers();
// The markers of models that cannot serve as chat models, in order.
const QStringList& nonChatModelMarkers();

bool supportsReasoningEffort(QStringView identifier);
bool isChatModel(QStringView identifier);
// The identifiers that pass isChatModel, in their incoming order (no sorting,
// duplicates kept).
QStringList chatModels(const QStringList& identifiers);

} // namespace scrivel
