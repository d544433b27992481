#include "core/windows/ConventionalWindowCoordinator.h"
#include "core/windows/WindowSession.h"

#include <QtTest>

using namespace scrivel;
using Policy = ActivationPolicy::Policy;

namespace {

struct RecordingPolicy : ActivationPolicy {
    Policy policy() const override { return current; }
    void setPolicy(Policy policy) override {
        current = policy;
        switches.append(policy);
    }
    Policy current = Policy::accessory;
    QList<Policy> switches;
};

void send(QObject* window, QEvent::Type type) {
    QEvent event(type);
    QCoreApplication::sendEvent(window, &event);
}

} // namespace

class ConventionalWindowCoordinatorTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void policySwitchesOnlyBetweenNoneAndSome() {
        RecordingPolicy policy;
        ConventionalWindowCoordinator coordinator(policy);
        QObject main, other;
        coordinator.track(&main);
        coordinator.track(&main); // shown again: one window, one identity
        coordinator.track(&other);
        QCOMPARE(coordinator.tracker().count(), 2);
        coordinator.untrack(&main);
        coordinator.untrack(&main); // already gone
        QCOMPARE(policy.switches, QList<Policy>{Policy::regular});
        coordinator.untrack(&other);
        coordinator.untrack(&other);
        QCOMPARE(policy.switches, (QList<Policy>{Policy::regular, Policy::accessory}));

        policy.current = Policy::regular; // already regular: not set again
        coordinator.track(&main);
        QCOMPARE(policy.switches.size(), 2);
    }

    void sessionFollowsShowAndClose() {
        RecordingPolicy policy;
        ConventionalWindowCoordinator coordinator(policy);
        QObject window;
        QList<QObject*> closed;
        new WindowSession(&window, coordinator, [&](QObject* w) { closed.append(w); });

        for (int round = 0; round < 2; ++round) {
            send(&window, QEvent::Show);
            send(&window, QEvent::Show);
            QCOMPARE(policy.current, Policy::regular);
            send(&window, QEvent::Hide);
            send(&window, QEvent::Hide); // closing twice closes once
            QCOMPARE(policy.current, Policy::accessory);
            QCOMPARE(closed, QList<QObject*>(round + 1, &window));
        }
    }

    void destroyingAnOpenWindowUntracksIt() {
        RecordingPolicy policy;
        ConventionalWindowCoordinator coordinator(policy);
        auto* window = new QObject;
        int closes = 0;
        new WindowSession(window, coordinator, [&](QObject*) { ++closes; });
        send(window, QEvent::Show);
        delete window;
        QVERIFY(coordinator.tracker().isEmpty());
        QCOMPARE(policy.current, Policy::accessory);
        QCOMPARE(closes, 0);
    }
};

QTEST_GUILESS_MAIN(ConventionalWindowCoordinatorTest)
#include "tst_ConventionalWindowCoordinator.moc"
