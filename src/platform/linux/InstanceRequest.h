#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QJsonObject>
#include <QString>
#include <optional>

namespace scrivel {

// One request from a later start to the running instance: a command and,
// optionally, data for it. On the wire it is one line of compact JSON, the
// command as "command" and the data as further members:
//   {"command":"toggle"}
//   {"command":"activate","activationToken":"…"}
// A receiver ignores members it does not know, so a newer start can still
// talk to an older instance.
struct InstanceRequest {
    QString command;
    // The members beside "command".
    QJsonObject data;

    // One line, ending in a line feed.
    QByteArray encode() const;
    // Nothing unless the line is a JSON object with a non-empty string
    // "command".
    static std::optional<InstanceRequest> decode(QByteArrayView line);
};

} // namespace scrivel
