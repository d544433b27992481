#pragma once

#include <QByteArray>
#include <QStringList>
#include <optional>

namespace scrivel {

// The body of a model-list request: {"data": [{"id": "..."}, ...]}.
struct ModelListResponse {
    QStringList ids;

    // Nothing unless "data" is a list whose every element has a text "id".
    static std::optional<ModelListResponse> decode(const QByteArray& body);
};

} // namespace scrivel
