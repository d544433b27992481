#pragma once

#include "core/pipeline/OnDeviceModel.h"

#include <QList>
#include <QString>

namespace scrivel::test {

// An on-device model whose availability and answers the test sets. It
// records every session made, every prewarm and every prompt.
class FakeOnDeviceModel : public OnDeviceModel {
public:
    struct SessionRecord {
        QString instructions;
        int prewarms = 0;
        QStringList prompts;
        QList<GenerationRequest> requests;
    };

    Availability availabilityValue{Availability::Kind::available, {}};
    // What respond() answers; the text reply echoes the prompt's input when
    // this holds no value and reply is empty.
    Response reply = QStringLiteral("transformed");
    QList<SessionRecord> sessions;

    Availability availability() const override { return availabilityValue; }
    std::unique_ptr<Session> makeSession(const QString& instructions) override;
};

} // namespace scrivel::test
