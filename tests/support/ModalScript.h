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
//
// A step runs on a turn of its own, never inside the look-out: a step that
// opens a dialog in turn (accepting a file dialog may warn) leaves the
// look-out free to see it. A dialog that no step expects, and a dialog left
// up by a failed step, are closed, so the test ends with its failure instead
// of waiting forever in a dialog's event loop.
class ModalScript : public QObject {
public:
    using Step = std::function<void(QWidget*)>;
    explicit ModalScript(QList<Step> steps) : m_steps(std::move(steps)) {
        connect(&m_poll, &QTimer::timeout, this, [this] { lookOut(); });
        m_poll.start(10);
    }
    bool done() const { return m_steps.isEmpty() && m_running == 0; }

private:
    void lookOut() {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || modal == m_last)
            return;
        m_last = modal;
        if (m_steps.isEmpty() || QTest::currentTestFailed()) {
            modal->close();
            return;
        }
        ++m_running;
        QTimer::singleShot(0, this, [this, step = m_steps.takeFirst(), target = QPointer(modal)] {
            if (target)
                step(target);
            --m_running;
            if (QTest::currentTestFailed() && target && target->isVisible())
                target->close();
        });
    }

    QList<Step> m_steps;
    int m_running = 0;
    QTimer m_poll;
    QPointer<QWidget> m_last;
};

// What a message box said, the texts of its buttons in order, and whether
// its window leaves room for its title beside a title bar's icon and buttons
// (the window manager cuts a longer title short: "Remov…API Key").
struct MessageBoxSeen {
    QString title;
    QString text;
    QString informative;
    QStringList buttons;
    bool titleFits = false;
};

// A step that records the message box into seen and clicks its answer button.
inline ModalScript::Step answerMessageBox(MessageBoxSeen& seen, const QString& answer) {
    return [&seen, answer](QWidget* modal) {
        auto* box = qobject_cast<QMessageBox*>(modal);
        QVERIFY2(box, "not a message box");
        QFont titleFont = box->font();
        titleFont.setBold(true);
        const int titleWidth = QFontMetrics(titleFont).horizontalAdvance(box->windowTitle());
        seen = {box->windowTitle(),
                box->text(),
                box->informativeText(),
                {},
                box->width() >= titleWidth + 140};
        for (QAbstractButton* button : box->buttons())
            seen.buttons.append(button->text());
        const qsizetype index = seen.buttons.indexOf(answer);
        QVERIFY2(index >= 0, qPrintable(answer));
        box->buttons().at(index)->click();
    };
}

} // namespace scrivel::test
