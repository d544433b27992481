#include "support/FakeOnDeviceModel.h"

namespace scrivel::test {

namespace {

class FakeSession : public OnDeviceModel::Session {
public:
    FakeSession(FakeOnDeviceModel& model, qsizetype index) : m_model(model), m_index(index) {}

    void prewarm() override { ++m_model.sessions[m_index].prewarms; }
    Future<OnDeviceModel::Response>
    respond(const OnDeviceModel::GenerationRequest& request) override {
        m_model.sessions[m_index].prompts << request.prompt;
        m_model.sessions[m_index].requests << request;
        return Future<OnDeviceModel::Response>::ready(m_model.reply);
    }

private:
    FakeOnDeviceModel& m_model;
    qsizetype m_index;
};

} // namespace

std::unique_ptr<OnDeviceModel::Session>
FakeOnDeviceModel::makeSession(const QString& instructions) {
    sessions.append({instructions, 0, {}, {}});
    return std::make_unique<FakeSession>(*this, sessions.size() - 1);
}

} // namespace scrivel::test
