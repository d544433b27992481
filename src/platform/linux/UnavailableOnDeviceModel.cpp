#include "platform/linux/UnavailableOnDeviceModel.h"

#include <QCoreApplication>

namespace scrivel {

namespace {

class NoSession : public OnDeviceModel::Session {
public:
    void prewarm() override {}
    Future<OnDeviceModel::Response> respond(const OnDeviceModel::GenerationRequest&) override {
        return Future<OnDeviceModel::Response>::ready(
            std::unexpected(OnDeviceModel::GenerationError::otherFailure));
    }
};

} // namespace

OnDeviceModel::Availability UnavailableOnDeviceModel::availability() const {
    return {Availability::Kind::other,
            QCoreApplication::translate("UnavailableOnDeviceModel",
                                        "No on-device model is available on this system")};
}

std::unique_ptr<OnDeviceModel::Session> UnavailableOnDeviceModel::makeSession(const QString&) {
    return std::make_unique<NoSession>();
}

} // namespace scrivel
