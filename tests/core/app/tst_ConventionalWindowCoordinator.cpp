#include "app/ConventionalWindowCoordinator.h"
#include "app/WindowSession.h"

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
        QCOMPARE(policy.switches, QList<Policy>{Policy::regular});
        coordinator.track(&main); // shown again: one window, one identity
        coordinator.track(&other);
        QCOMPARE(policy.switches, QList<Policy>{Policy::regular});
        QCOMPARE(coordinator.tracker().count(), 2);
        coordinator.untrack(&main);
        QCOMPARE(policy.current, Policy::regular);
        coordinator.untrack(&main); // already gone
        coordinator.untrack(&other);
        QCOMPARE(policy.switches, (QList<Policy>{Policy::regular, Policy::accessory}));
        coordinator.untrack(&other);
        QCOMPARE(policy.switches.size(), 2);
    }

    void alreadyRegularIsNotSetAgain() {
        RecordingPolicy policy;
        policy.current = Policy::regular;
        ConventionalWindowCoordinator coordinator(policy);
        QObject window;
        coordinator.track(&window);
        QVERIFY(policy.switches.isEmpty());
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
            QCOMPARE(policy.current, Policy::accessory);
            QCOMPARE(closed.size(), round + 1);
            send(&window, QEvent::Hide); // closing twice closes once
            QCOMPARE(closed.size(), round + 1);
        }
        QCOMPARE(closed.first(), &window);
        QCOMPARE(policy.switches.size(), 4);
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
