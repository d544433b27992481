#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <functional>

namespace scrivel::test {

// Answers the modal dialogs that open, one after the other, with the given
// steps; each step sees the dialog that is up. Dialogs open on a later turn
// of the event loop, so it keeps looking until every step has run.
class ModalScript : public QObject {
public:
    using Step = std::function<void(QWidget*)>;
    explicit ModalScript(QList<Step> steps) : m_steps(std::move(steps)) {
        connect(&m_poll, &QTimer::timeout, this, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (!modal || modal == m_last || m_steps.isEmpty())
                return;
            m_last = modal;
            m_steps.takeFirst()(modal);
        });
        m_poll.start(10);
    }
    bool done() const { return m_steps.isEmpty(); }

private:
    QList<Step> m_steps;
    QTimer m_poll;
    QPointer<QWidget> m_last;
};

// What a message box said, and the texts of its buttons in order.
struct MessageBoxSeen {
    QString text;
    QString informative;
    QStringList buttons;
};

// A step that records the message box into seen and clicks its answer button.
inline ModalScript::Step answerMessageBox(MessageBoxSeen& seen, const QString& answer) {
    return [&seen, answer](QWidget* modal) {
        auto* box = qobject_cast<QMessageBox*>(modal);
        QVERIFY2(box, "not a message box");
        seen = {box->text(), box->informativeText(), {}};
        for (QAbstractButton* button : box->buttons())
            seen.buttons.append(button->text());
        const qsizetype index = seen.buttons.indexOf(answer);
        QVERIFY2(index >= 0, qPrintable(answer));
        box->buttons().at(index)->click();
    };
}

} // namespace scrivel::test
