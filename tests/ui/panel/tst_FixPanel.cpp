#include "core/panel/FixPanelControlsState.h"
#include "core/presets/PresetStore.h"
#include "support/FakeTransformer.h"
#include "support/InMemoryClipboard.h"
#include "support/InMemorySettingsStore.h"
#include "ui/panel/FixPanelController.h"
#include "ui/panel/FixPanelControlsRow.h"
#include "ui/panel/FixPanelView.h"
#include "ui/panel/FixPanelWindow.h"
#include "ui/panel/PanelTextEditor.h"
#include "ui/widgets/SettingsStatusLabel.h"

#include <QAccessible>
#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QtTest>
#include <cmath>

using namespace scrivel;
using test::FakeTransformer;

// The panel as the user meets it: keys in the text field, the controls of
// each stage, Escape and the loss of focus, Ctrl+digit for presets.
class FixPanelTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_settings = std::make_unique<InMemorySettingsStore>();
        m_presets = std::make_unique<PresetStore>(*m_settings);
        m_presets->seedIfEmpty(false);
        m_presets->activate(m_presets->presets()[1].id); // no edit validation
        m_fake = std::make_unique<FakeTransformer>();
        m_coordinator = std::make_unique<RewriteCoordinator>(*m_fake);
        m_clipboard = InMemoryClipboard();
        m_controller =
            std::make_unique<FixPanelController>(*m_presets, *m_coordinator, m_clipboard);
    }

    void cleanup() { m_controller.reset(); }

    void returnKeys_data() {
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<bool>("submits");
        QTest::addColumn<QString>("text");
        QTest::newRow("Return") << int(Qt::NoModifier) << true << QStringLiteral("teh cat");
        QTest::newRow("Shift+Return")
            << int(Qt::ShiftModifier) << false << QStringLiteral("teh cat\n");
        QTest::newRow("Ctrl+Return")
            << int(Qt::ControlModifier) << false << QStringLiteral("teh cat");
    }
    void returnKeys() {
        QFETCH(int, modifiers);
        QFETCH(bool, submits);
        QFETCH(QString, text);
        show(QStringLiteral("teh cat"));
        QTest::keyClick(&editor(), Qt::Key_Return, Qt::KeyboardModifiers(modifiers));
        QCOMPARE(m_fake->calls.size(), submits ? 1 : 0);
        QCOMPARE(submits ? m_fake->last().text : m_controller->model().text(), text);
    }

    void controlsFollowTheRun() {
        show();
        FixPanelControlsRow& controls = *view().controls();
        QVERIFY(!controls.runButton()->isEnabled()); // empty text
        QTest::keyClicks(&editor(), QStringLiteral("teh cat"));
        QVERIFY(controls.runButton()->isEnabled());

        QTest::keyClick(&editor(), Qt::Key_Return);
        QVERIFY(!editor().isEnabled());
        QVERIFY(!controls.picker()->isEnabled());
        QVERIFY(controls.runButton()->isHidden());
        QVERIFY(button(QStringLiteral("Cancel"))->isVisible());

        m_fake->complete(QStringLiteral("The cat"));
        QTRY_COMPARE(m_clipboard.written.size(), 1);
        QCOMPARE(m_clipboard.written.first().plainText, QStringLiteral("The cat"));
        QTRY_VERIFY(editor().isEnabled());
        QVERIFY(view().outcome()->isVisible());
        QCOMPARE(view().outcome()->status(), SettingsStatus::success(QStringLiteral(
                                                 "Copied. Press Ctrl+V to replace your text.")));
        QPushButton* revert = button(QStringLiteral("Revert"));
        QVERIFY(revert->isVisible());

        // Typing after a result returns to input: the outcome and Revert go.
        QTest::keyClicks(&editor(), QStringLiteral("!"));
        QVERIFY(!view().outcome()->isVisible());
        QVERIFY(!revert->isVisible());
    }

    void presetChosenElsewhereReturnsToEditing_data() {
        QTest::addColumn<bool>("fails");
        QTest::newRow("after Copied") << false;
        QTest::newRow("after a failure") << true;
    }
    void presetChosenElsewhereReturnsToEditing() {
        QFETCH(bool, fails);
        show(QStringLiteral("teh cat"));
        QTest::keyClick(&editor(), Qt::Key_Return);
        if (fails)
            m_fake->fail(TransformFailure::rewrite(RewriteError::timeout()));
        else
            m_fake->complete(QStringLiteral("The cat"));
        QTRY_VERIFY(view().outcome()->isVisible());
        QCOMPARE(button(QStringLiteral("Revert"))->isVisible(), !fails);

        // The tray's preset menu (and the main window's Use Preset) activate
        // in the store, not through the panel.
        m_presets->activate(m_presets->presets()[2].id);
        QCOMPARE(m_controller->model().stage(), PanelStage::input());
        QVERIFY(!view().outcome()->isVisible());
        QVERIFY(!button(QStringLiteral("Revert"))->isVisible());
        QCOMPARE(view().controls()->picker()->currentText(), m_presets->presets()[2].name);
        QCOMPARE(m_controller->model().text(),
                 fails ? QStringLiteral("teh cat") : QStringLiteral("The cat"));

        // A run in progress carries on with the preset it started with.
        QTest::keyClick(&editor(), Qt::Key_Return);
        m_presets->activate(m_presets->presets()[1].id);
        QCOMPARE(m_controller->model().stage(), PanelStage::working());
    }

    void streamedTextAppearsAndStaysAtTheEnd() {
        show(QString(2000, u'x'));
        QTest::keyClick(&editor(), Qt::Key_Return);
        QStringList partials;
        QString reply;
        for (int i = 0; i < 200; ++i) {
            reply += QStringLiteral("line %1\n").arg(i);
            partials << reply;
        }
        m_fake->partials(partials);
        QTRY_COMPARE(m_controller->model().text(), reply);
        view().flushText();
        QCOMPARE(editor().exactText(), reply);
        QTRY_COMPARE(editor().verticalScrollBar()->value(),
                     editor().verticalScrollBar()->maximum());
        QVERIFY(editor().verticalScrollBar()->maximum() > 0);
    }

    void escapeCancelsARunThenHides() {
        show(QStringLiteral("teh cat"));
        QTest::keyClick(&editor(), Qt::Key_Return);
        m_fake->partials({QStringLiteral("The")});
        QTest::keyClick(m_controller->panel(), Qt::Key_Escape);
        QCOMPARE(m_controller->model().stage(), PanelStage::input());
        QCOMPARE(m_controller->model().text(), QStringLiteral("teh cat"));
        // Shown in the field, not scrolled out of it.
        QTRY_COMPARE(editor().exactText(), QStringLiteral("teh cat"));
        QCOMPARE(editor().verticalScrollBar()->maximum(), 0);
        QVERIFY(m_controller->isPanelVisible());

        QTest::keyClick(m_controller->panel(), Qt::Key_Escape);
        QVERIFY(!m_controller->isPanelVisible());
        QCOMPARE(m_controller->model().text(), QString());
    }

    void focusLossHidesUnlessWorking_data() {
        QTest::addColumn<bool>("working");
        QTest::addColumn<bool>("handingBack");
        QTest::newRow("input") << false << false;
        QTest::newRow("working") << true << false;
        // The focus goes to the window a result is pasted into.
        QTest::newRow("handing back") << false << true;
    }
    void focusLossHidesUnlessWorking() {
        QFETCH(bool, working);
        QFETCH(bool, handingBack);
        show(QStringLiteral("teh cat"));
        if (working)
            QTest::keyClick(&editor(), Qt::Key_Return);
        if (handingBack)
            m_controller->beginHandBack();
        QEvent deactivate(QEvent::WindowDeactivate);
        QCoreApplication::sendEvent(m_controller->panel(), &deactivate);
        const bool stays = working || handingBack;
        QCOMPARE(m_controller->isPanelVisible(), stays);
        QCOMPARE(m_controller->model().text(), stays ? QStringLiteral("teh cat") : QString());
        QCOMPARE(m_controller->model().stage().kind,
                 working ? PanelStage::Kind::working : PanelStage::Kind::input);
    }

    void aHandBackEndsHiddenOrInFront_data() {
        QTest::addColumn<bool>("pasted");
        QTest::newRow("pasted") << true;
        QTest::newRow("not pasted") << false;
    }
    void aHandBackEndsHiddenOrInFront() {
        QFETCH(bool, pasted);
        show(QStringLiteral("teh cat"));
        QTest::keyClick(&editor(), Qt::Key_Return);
        m_fake->complete(QStringLiteral("The cat."));
        QTRY_COMPARE(m_controller->model().stage(), PanelStage::copied());
        m_controller->beginHandBack();
        m_controller->endHandBack(pasted);
        QVERIFY(!m_controller->isHandingBack());
        QCOMPARE(m_controller->isPanelVisible(), !pasted);
        // Kept on show with its result (and Revert) when nothing was pasted.
        QCOMPARE(m_controller->model().stage(),
                 pasted ? PanelStage::input() : PanelStage::copied());
        QCOMPARE(m_controller->model().text(), pasted ? QString() : QStringLiteral("The cat."));
    }

    void aTakenTextIsSelectedWhole() {
        show();
        m_controller->model().setText(QStringLiteral("teh café\nsat"));
        m_controller->selectAllText();
        QCOMPARE(editor().textCursor().selectedText(), QStringLiteral("teh café\u2029sat"));
        QTest::keyClicks(&editor(), QStringLiteral("x"));
        QCOMPARE(m_controller->model().text(), QStringLiteral("x"));
    }

    void showsAtTheHeightOfItsText() {
        // Shown once with a tall text and hidden: the next text is short.
        m_controller->model().setText(QStringLiteral("a\nb\nc\nd\ne\nf"));
        show();
        const int tall = m_controller->panel()->height();
        m_controller->dismiss();
        for (const QString& text : {QStringLiteral("one line"), QStringLiteral("a\nb\nc")}) {
            m_controller->model().setText(text);
            m_controller->present(QPoint(200, 200));
            const QSize shown = m_controller->panel()->size();
            // Laid out afterwards, it keeps the size it was shown with: a
            // window that changes size while the window manager places it
            // may be put elsewhere.
            QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
            QCOMPARE(m_controller->panel()->size(), shown);
            QVERIFY(shown.height() < tall);
            m_controller->dismiss();
        }
    }

    void ctrlDigitsReachTheFirstNinePresets() {
        while (m_presets->presets().size() < 11) {
            Preset preset = m_presets->presets().first();
            preset.id = QUuid::createUuid();
            preset.name = QStringLiteral("Preset %1").arg(m_presets->presets().size() + 1);
            m_presets->add(preset);
        }
        show(QStringLiteral("teh cat"));
        QCOMPARE(view().presetKeys().size(), 9);
        QCOMPARE(view().controls()->picker()->count(), 11);

        QTest::keyClick(m_controller->panel(), Qt::Key_9, Qt::ControlModifier);
        QCOMPARE(m_presets->activePreset()->id, m_presets->presets()[8].id);
        QTest::keyClick(m_controller->panel(), Qt::Key_3, Qt::ControlModifier);
        QCOMPARE(m_presets->activePreset()->id, m_presets->presets()[2].id);
        QCOMPARE(view().controls()->picker()->currentText(), m_presets->presets()[2].name);
        QTest::keyClick(m_controller->panel(), Qt::Key_0, Qt::ControlModifier);
        QCOMPARE(m_presets->activePreset()->id, m_presets->presets()[2].id);
    }

    void anUnnamedPresetIsListedAsUntitled() {
        Preset unnamed = *m_presets->activePreset();
        unnamed.name = QString();
        m_presets->update(unnamed);
        show(QStringLiteral("teh cat"));
        QCOMPARE(view().controls()->picker()->currentText(), QStringLiteral("Untitled Preset"));
    }

    void heightFollowsTheLineRule_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("lines");
        QTest::newRow("empty") << QString() << 1;
        QTest::newRow("three lines") << QStringLiteral("a\nb\nc") << 3;
        QTest::newRow("long") << QString(5000, u'a') << 8;
    }
    void heightFollowsTheLineRule() {
        QFETCH(QString, text);
        QFETCH(int, lines);
        show();
        m_controller->model().setText(text);
        view().flushText();
        const int lineHeight = int(std::ceil(QFontMetricsF(editor().font()).lineSpacing()));
        QCOMPARE(editor().height(), lineHeight * lines + 8);
    }

    void pastedTextTallerThanTheFieldScrolls_data() {
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<bool>("scrolls");
        const QString wrapped = QStringLiteral(
            "Third line: long enough to wrap over several lines in the panel because it goes "
            "on and on with words that keep coming until it has wrapped at least twice");
        QTest::newRow("one line") << QStringList{QStringLiteral("teh cat")} << false;
        QTest::newRow("eight short lines")
            << QStringList{"1", "2", "3", "4", "5", "6", "7", "8"} << false;
        // Sized for seven lines by the line rule, nine once wrapped.
        QTest::newRow("seven lines, one wrapped")
            << QStringList{"First", "Second", wrapped, "Fourth", "Fifth", "Sixth", "Seventh"}
            << true;
        QTest::newRow("eight lines, one wrapped")
            << QStringList{"First", "Second", wrapped,   "Fourth",
                           "Fifth", "Sixth",  "Seventh", "Eighth"}
            << true;
    }
    void pastedTextTallerThanTheFieldScrolls() {
        QFETCH(QStringList, lines);
        QFETCH(bool, scrolls);
        show();
        QApplication::clipboard()->setText(lines.join(u'\n'));
        QTest::keyClick(&editor(), Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(m_controller->model().text(), lines.join(u'\n'));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);

        QScrollBar& bar = *editor().verticalScrollBar();
        QCOMPARE(bar.isVisible(), scrolls);
        QCOMPARE(bar.maximum() > 0, scrolls);
        // Both ends can be brought into view: the last line after the paste,
        // the first one by scrolling back.
        const QRect viewport = editor().viewport()->rect();
        QTextCursor end = editor().textCursor();
        end.movePosition(QTextCursor::End);
        QVERIFY(viewport.contains(editor().cursorRect(end)));
        bar.setValue(bar.minimum());
        QVERIFY(viewport.contains(editor().cursorRect(QTextCursor(editor().document()))));
    }

    void scrolledTextLeavesNoFragmentsAbove() {
        show(QStringLiteral("teh cat"));
        QTest::keyClick(&editor(), Qt::Key_Return);
        // Paragraphs that wrap: the view is scrolled to wrapped lines.
        QString reply;
        for (int i = 1; i <= 12; ++i) {
            reply += QStringLiteral("Line %1 of a long reply that keeps on growing, gently, so "
                                    "the panel must grow too.\n")
                         .arg(i);
            m_fake->partials({reply});
            QTRY_COMPARE(m_controller->model().text(), reply);
            view().flushText();
            QScrollBar& bar = *editor().verticalScrollBar();
            QTRY_COMPARE(bar.value(), bar.maximum());
            // Above the first line wholly in view, only the background.
            QTextCursor line(editor().document());
            while (editor().cursorRect(line).top() < 0 && line.movePosition(QTextCursor::Down))
                ;
            const int firstLineTop = editor().cursorRect(line).top();
            const QImage shot = editor().viewport()->grab().toImage();
            const QColor background = editor().palette().color(QPalette::Base);
            for (int y = 0; y < firstLineTop; ++y) {
                for (int x = 0; x < shot.width(); ++x)
                    QVERIFY2(
                        shot.pixelColor(x, y) == background,
                        qPrintable(
                            QStringLiteral("line %1: a fragment at %2,%3").arg(i).arg(x).arg(y)));
            }
        }
    }

    void staysOnScreenAtTheBottomEdge() {
        const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
        const int lowest = area.y() + area.height() - 8; // the bottom margin
        // Shown once with the hint and eight lines of text (taller), then
        // dismissed: the next presentation measures the empty panel.
        m_controller->setShortcutHint(QStringLiteral("Press Ctrl+Alt+Return anywhere."));
        m_controller->presentCentered(QStringLiteral("1\n2\n3\n4\n5\n6\n7\n8"));
        QVERIFY(QTest::qWaitForWindowExposed(m_controller->panel()));
        const int tall = m_controller->panel()->height();
        QTest::keyClick(m_controller->panel(), Qt::Key_Escape);
        QVERIFY(!m_controller->isPanelVisible());
        // The hidden panel's layout requests are handled (and ignored) before
        // the shortcut shows it again.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);

        m_controller->present(QPoint(area.center().x(), lowest));
        QVERIFY(QTest::qWaitForWindowActive(m_controller->panel()));
        QRect frame = m_controller->panel()->frameGeometry();
        QVERIFY(frame.height() < tall);
        QCOMPARE(frame.y() + frame.height(), lowest);

        // A long reply streams in: the panel grows and moves up, its whole
        // frame on screen at every step.
        QTest::keyClicks(&editor(), QStringLiteral("teh cat"));
        QTest::keyClick(&editor(), Qt::Key_Return);
        QString reply;
        for (int i = 0; i < 12; ++i) {
            reply += QStringLiteral("Line %1 of a reply\n").arg(i);
            m_fake->partials({reply});
            QTRY_COMPARE(m_controller->model().text(), reply);
            view().flushText();
            // The layouts take the new height.
            QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
            frame = m_controller->panel()->frameGeometry();
            QVERIFY2(area.adjusted(8, 8, -8, -8).contains(frame),
                     qPrintable(QStringLiteral("line %1: %2,%3 %4×%5")
                                    .arg(i)
                                    .arg(frame.x())
                                    .arg(frame.y())
                                    .arg(frame.width())
                                    .arg(frame.height())));
        }
        QCOMPARE(frame.height(), tall - view().hint()->sizeHint().height() - 8);
        QCOMPARE(frame.y() + frame.height(), lowest);
    }

    void accessibleAsANamedWindow() {
        show(QStringLiteral("teh cat"));
        QAccessibleInterface* window = QAccessible::queryAccessibleInterface(m_controller->panel());
        QVERIFY(window);
        QCOMPARE(window->role(), QAccessible::Window);
        QCOMPARE(window->text(QAccessible::Name), QStringLiteral("Scrivel Panel"));
        // Every control a screen reader reaches says what it is; nothing
        // decorative is left over as an unnamed image.
        const auto check = [](QAccessibleInterface* node, auto& self) -> void {
            for (int i = 0; i < node->childCount(); ++i) {
                QAccessibleInterface* child = node->child(i);
                if (!child || child->state().invisible)
                    continue;
                const QAccessible::Role role = child->role();
                if (role == QAccessible::Button || role == QAccessible::Graphic ||
                    role == QAccessible::ComboBox || role == QAccessible::EditableText)
                    QVERIFY2(!child->text(QAccessible::Name).isEmpty(),
                             qPrintable(QStringLiteral("role %1").arg(int(role))));
                self(child, self);
            }
        };
        check(window, check);
    }

    void focusRingFollowsTheFocus() {
        show(QStringLiteral("teh cat"));
        const QColor ring = view().palette().color(QPalette::Highlight);
        // Just outside the focused control, on its left edge.
        const auto ringAt = [&](QWidget* control) {
            const QImage shot = view().grab().toImage();
            const QRect box(control->mapTo(&view(), QPoint(0, 0)), control->size());
            const QColor seen = shot.pixelColor(box.left() - 3, box.center().y());
            return qAbs(seen.red() - ring.red()) + qAbs(seen.green() - ring.green()) +
                       qAbs(seen.blue() - ring.blue()) <
                   60;
        };
        QVERIFY(ringAt(&editor()));
        QComboBox* picker = view().controls()->picker();
        QVERIFY(!ringAt(picker));
        QTest::keyClick(&editor(), Qt::Key_Tab);
        QTRY_VERIFY(picker->hasFocus());
        QVERIFY(ringAt(picker));
        QVERIFY(!ringAt(&editor()));
        QTest::keyClick(picker, Qt::Key_Tab);
        QPushButton* run = view().controls()->runButton();
        QTRY_VERIFY(run->hasFocus());
        QVERIFY(ringAt(run));
    }

    void hintNamesTheShortcutOnlyWhenAsked() {
        m_controller->setShortcutHint(shortcutHintText(QStringLiteral("Ctrl+Alt+Return")));
        m_controller->presentCentered(QStringLiteral("This sentense has a typo."));
        QVERIFY(QTest::qWaitForWindowExposed(m_controller->panel()));
        QCOMPARE(m_controller->model().text(), QStringLiteral("This sentense has a typo."));
        QVERIFY(view().hint()->isVisible());
        QCOMPARE(view().hint()->text(),
                 QStringLiteral("Press Ctrl+Alt+Return anywhere to open Scrivel."));

        m_controller->setShortcutHint(std::nullopt); // removed in the settings
        QVERIFY(!view().hint()->isVisible());

        // Opened by the shortcut, the hint stays off.
        m_controller->setShortcutHint(shortcutHintText(QStringLiteral("Ctrl+Alt+Return")));
        m_controller->toggle();
        m_controller->toggle();
        QVERIFY(m_controller->isPanelVisible());
        QVERIFY(!view().hint()->isVisible());
    }

    // Where the pointer's place is unknown (Wayland) the toggle opens the
    // panel where a centred presentation would.
    void toggleOpensAtThePointerOrCentred_data() {
        QTest::addColumn<bool>("atPointer");
        QTest::newRow("at the pointer") << true;
        QTest::newRow("centred") << false;
    }
    void toggleOpensAtThePointerOrCentred() {
        QFETCH(bool, atPointer);
        PanelWindowTraits traits;
        traits.opensAtPointer = atPointer;
        m_controller =
            std::make_unique<FixPanelController>(*m_presets, *m_coordinator, m_clipboard, traits);
        m_controller->presentCentered(std::nullopt);
        QVERIFY(QTest::qWaitForWindowExposed(m_controller->panel()));
        const QPoint centred = m_controller->panel()->pos();
        m_controller->toggle();
        QCursor::setPos(centred + QPoint(-150, 90));
        m_controller->toggle();
        QVERIFY(m_controller->isPanelVisible());
        QCOMPARE(m_controller->panel()->pos() == centred, !atPointer);
    }

private:
    void show(const QString& text = {}) {
        m_controller->present(QPoint(200, 200));
        QVERIFY(QTest::qWaitForWindowActive(m_controller->panel()));
        if (!text.isEmpty())
            QTest::keyClicks(&editor(), text);
        QTRY_VERIFY(editor().hasFocus());
    }

    FixPanelView& view() { return *m_controller->view(); }
    QPushButton* button(const QString& text) {
        for (QPushButton* button : view().controls()->findChildren<QPushButton*>())
            if (button->text() == text)
                return button;
        return nullptr;
    }
    PanelTextEditor& editor() { return *view().editor(); }

    std::unique_ptr<InMemorySettingsStore> m_settings;
    std::unique_ptr<PresetStore> m_presets;
    std::unique_ptr<FakeTransformer> m_fake;
    std::unique_ptr<RewriteCoordinator> m_coordinator;
    InMemoryClipboard m_clipboard;
    std::unique_ptr<FixPanelController> m_controller;
};

QTEST_MAIN(FixPanelTest)
#include "tst_FixPanel.moc"
