// Grabbing into the main window's boxes, the Smart Data Collector beside it, and writing the boxes back into the
// contact manager with undo, against the contact manager's model and a desktop of made-up windows.

#include "app/WindowFixture.h"
#include "grab/ContactUpdater.h"
#include "grab/SmartParserWindow.h"
#include "support/ScriptedDesktop.h"

#include <QAction>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>

using namespace corvalent;
using namespace Qt::StringLiterals;

namespace {

const QStringList kOriginal = test::kBoxesA;
// What the user types into the seven boxes of an update or a new contact, emoji included.
const QStringList kTyped{u"Zoë Ångström"_s, u"東京 Trading 🎉"_s, u"1 Rue Neuve"_s, u"Québec"_s, u"QC"_s, u"G1R 4S9"_s,
                         u"Canada"_s};

QStringList changed(QStringList boxes, const QMap<int, QString>& changes)
{
    for (auto it = changes.begin(); it != changes.end(); ++it)
        boxes[it.key()] = it.value();
    return boxes;
}

} // namespace

class TestGrabWindow : public QObject {
    Q_OBJECT

    std::unique_ptr<test::WindowFixture> m;
    test::ScriptedDesktop* m_desktop = nullptr;

    MainWindow& start()
    {
        MainWindow& w = m->start();
        auto desktop = std::make_unique<test::ScriptedDesktop>(
            QList<test::ScriptedWindow>{test::ScriptedWindow::named(u"Corvalent"_s)});
        m_desktop = desktop.get();
        w.setDesktop(std::move(desktop));
        return w;
    }
    // The user selects `text` in the browser and presses Grab beside box `slot`.
    void grab(int slot, const QString& text)
    {
        // The scripted browser copies what its window holds as selection.
        *m_desktop = test::ScriptedDesktop({test::ScriptedWindow::named(u"Corvalent"_s),
                                            test::ScriptedWindow::named(u"Results - Mozilla Firefox"_s, text)});
        QTest::mouseClick(m->widget<QPushButton>(u"cmdGrab(%1)"_s.arg(slot)), Qt::LeftButton);
    }
    QAction* undo() { return m->window().findChild<QAction*>(u"mnuUndo"_s); }
    QStringList contactRows(qint64 id)
    {
        QStringList rows;
        for (int fieldId : {26, 25, 27, 30, 31, 32, 33})
            rows << m->host.host.store().fieldText(id, fieldId);
        return rows;
    }

private slots:
    void init() { m = std::make_unique<test::WindowFixture>(); }
    void cleanup() { m.reset(); }

    void grabThenUndo_data()
    {
        QTest::addColumn<int>("slot");
        QTest::addColumn<QString>("selection");
        QTest::addColumn<QString>("usAuto");
        QTest::addColumn<QStringList>("boxes");
        const auto row = [](const char* name, int slot, const QString& selection, const QMap<int, QString>& changes,
                            const QString& usAuto = u"1"_s) {
            QTest::newRow(name) << slot << selection << usAuto << changed(kOriginal, changes);
        };
        row("controls and a trailing break dropped", 1, u"Acme\tCorp\r\n"_s, {{1, u"AcmeCorp"_s}});
        row("nothing selected", 1, QString(), {});
        row("city, state and zip into zip", 5, u"Springfield, IL 62704"_s,
            {{3, u"Springfield"_s}, {4, u"IL"_s}, {5, u"62704"_s}});
        row("city, province and postal code into state", 4, u"Ottawa, Ontario K1P1J1"_s,
            {{3, u"Ottawa"_s}, {4, u"ON"_s}, {5, u"K1P 1J1"_s}});
        row("recognition off", 5, u"Springfield, IL 62704"_s, {{5, u"Springfield, IL 62704"_s}}, u"0"_s);
        row("not an address line into zip", 5, u"Suite 100"_s, {{5, u"Suite 100"_s}});
        row("only a zip", 5, u"62704-1234"_s, {{5, u"62704-1234"_s}});
    }
    void grabThenUndo()
    {
        QFETCH(int, slot);
        QFETCH(QString, selection);
        QFETCH(QString, usAuto);
        QFETCH(QStringList, boxes);
        SaveSetting(u"USAuto"_s, usAuto);
        start();
        QVERIFY(!undo()->isEnabled());
        grab(slot, selection);
        QCOMPARE(m->boxes(), boxes);
        QCOMPARE(undo()->text().remove(u'&'), ContactUpdater::kUndoGrabCaption);
        QVERIFY(undo()->isEnabled());
        undo()->trigger();
        QCOMPARE(m->boxes(), kOriginal);
        QVERIFY(!undo()->isEnabled());
        // A grab writes the boxes only; the contact is as it was.
        QCOMPARE(contactRows(m->host.ids[0]), kOriginal.mid(0, 7));
    }

    void collectorHandsOutLines()
    {
        MainWindow& w = start();
        w.move(450, 120); // room on its left for the collector
        grab(0, u"John Smith\n\n--- Acme Ltd\n1500 Main Street, Springfield\n"_s);
        QVERIFY(w.bSmartParserOn);
        QCOMPARE(m->boxes(), kOriginal); // nothing written until a line is handed out
        auto parser = w.findChild<SmartParserWindow*>(u"frmSmartParser"_s);
        QVERIFY(parser && QTest::qWaitForWindowExposed(parser));
        QCOMPARE(parser->windowTitle(), u"Smart Data Collector"_s);
        // Left of the main window, centred on it.
        const QRect own = parser->frameGeometry();
        QCOMPARE(own.left(), w.frameGeometry().left() - own.width());
        QVERIFY2(qAbs(own.center().y() - w.frameGeometry().center().y()) <= 1,
                 qPrintable(QString::number(own.top())));
        auto* current = parser->findChild<QLineEdit*>(u"txtCurrent"_s);
        auto* next = parser->findChild<QPushButton*>(u"cmdUp"_s);
        auto* previous = parser->findChild<QPushButton*>(u"cmdDown"_s);
        QCOMPARE(current->text(), u"John Smith"_s);
        // The lines still to come, as grabbed: the blank line and the final line end too.
        QCOMPARE(parser->findChild<QPlainTextEdit*>(u"txtGrabbed"_s)->toPlainText(),
                 u"\n--- Acme Ltd\n1500 Main Street, Springfield\n\n"_s);
        QVERIFY(next->isEnabled() && !previous->isEnabled());
        // Ctrl+1 is the first box's Grab, also while the collector is open.
        QTest::keyClick(&w, Qt::Key_1, Qt::ControlModifier);
        QCOMPARE(m->box(0)->text(), u"John Smith"_s);
        QCOMPARE(current->text(), u"Acme Ltd"_s);
        // Ctrl+Down and Ctrl+Up move it from the main window, as does a click on the window's background (a click on
        // a caption is not one).
        QTest::keyClick(&w, Qt::Key_Down, Qt::ControlModifier);
        QCOMPARE(current->text(), u"1500 Main Street, Springfield"_s);
        QVERIFY(!next->isEnabled() && previous->isEnabled());
        QTest::keyClick(&w, Qt::Key_Up, Qt::ControlModifier);
        QTest::mouseClick(m->widget<QWidget>(u"lblContact"_s), Qt::LeftButton);
        QCOMPARE(current->text(), u"Acme Ltd"_s);
        QTest::mouseClick(m->widget<QWidget>(u"fraContactInformation"_s), Qt::LeftButton, {}, QPoint(2, 2));
        // A selection in the line: it goes, and the rest stays for the next box.
        current->setSelection(0, 16);
        QTest::mouseClick(m->widget<QPushButton>(u"cmdGrab(2)"_s), Qt::LeftButton);
        QCOMPARE(m->box(2)->text(), u"1500 Main Street"_s);
        QCOMPARE(current->text(), u"Springfield"_s);
        // What the user types into the box is what the next step works on.
        current->selectAll();
        QTest::keyClicks(current, u"Springfield, IL 62704"_s);
        current->setSelection(0, 11);
        QTest::mouseClick(m->widget<QPushButton>(u"cmdGrab(3)"_s), Qt::LeftButton);
        QCOMPARE(current->text(), u"IL 62704"_s);
        QTest::mouseClick(m->widget<QPushButton>(u"cmdGrab(6)"_s), Qt::LeftButton);
        QCOMPARE(m->boxes(), changed(kOriginal, {{0, u"John Smith"_s}, {2, u"1500 Main Street"_s},
                                                 {3, u"Springfield"_s}, {6, u"IL 62704"_s}}));
        // Nothing left: the collector is gone, and undo takes back the last grab only.
        QTRY_VERIFY(!w.bSmartParserOn);
        QTRY_VERIFY(!w.findChild<SmartParserWindow*>());
        undo()->trigger();
        QCOMPARE(m->box(6)->text(), kOriginal[6]);
        QCOMPARE(m->box(3)->text(), u"Springfield"_s);
        // Escape closes it, and the main window hears of it.
        grab(0, u"One\nTwo"_s);
        QPointer<SmartParserWindow> left = w.smartParser();
        left->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(left));
        QTest::keyClick(left->findChild<QLineEdit*>(u"txtCurrent"_s), Qt::Key_Escape);
        QTRY_VERIFY(left.isNull());
        QVERIFY(!w.bSmartParserOn);
        // Taken down with the main window, an open collector goes with it.
        grab(0, u"One\nTwo"_s);
        left = w.smartParser();
        QVERIFY(left);
        m.reset();
        QVERIFY(left.isNull());
    }

    // An update answered No, then Yes, a new contact of the same boxes, and a grab undone: each writes what it
    // should, and undo takes back the last of the update and the grab.
    void updateNewContactAndUndo()
    {
        MainWindow& w = start();
        const qsizetype contacts = m->host.host.lookupIds().size();
        for (int slot = 0; slot < kTyped.size(); ++slot)
            w.form().setText(slot, kTyped[slot]);
        for (const auto answer : {Prompter::No, Prompter::Yes}) {
            m->prompter->scriptAnswer(answer);
            QTest::mouseClick(m->widget<QPushButton>(u"cmdUpdateACT"_s), Qt::LeftButton);
            const auto& asked = m->prompter->prompts().last();
            QCOMPARE(u"%1 %2: %3"_s.arg(asked.style).arg(asked.caption, asked.text),
                     u"292 App.title: Are you sure you want to update the current contact in Corvalent Contacts?"_s);
            QCOMPARE(contactRows(m->host.ids[0]), answer == Prompter::Yes ? kTyped : kOriginal.mid(0, 7));
            QCOMPARE(undo()->isEnabled(), answer == Prompter::Yes);
        }
        // After every write the contact manager is told to refresh, and its window is not left frozen.
        QVERIFY(m->host.backend.calls.contains(u"Command"_s));
        m->host.backend.calls.clear();
        QTest::mouseClick(m->widget<QPushButton>(u"cmdNewContact"_s), Qt::LeftButton);
        QCoreApplication::sendPostedEvents(); // the contact manager's events, as they come in between
        QCOMPARE(m->host.host.lookupIds().size(), contacts + 1);
        QCOMPARE(contactRows(m->host.host.lookupIds().last()), kTyped);
        QVERIFY(m->host.backend.calls.contains(u"Command"_s));
        QVERIFY(!m->host.host.isWindowUpdateLocked());
        QCOMPARE(undo()->text().remove(u'&'), u"Undo Update Corvalent Contacts"_s);
        // The grab came last: undo takes the grab back, and the update stays.
        grab(1, u"Grabbed Inc"_s);
        undo()->trigger();
        QCOMPARE(m->box(1)->text(), kTyped[1]);
        QCOMPARE(contactRows(m->host.ids[0]), kTyped);
        QVERIFY(!undo()->isEnabled());
    }

    void newContactWritesOnlyGrabbableRows()
    {
        // House number and street rows read a derived value: their Grab buttons are disabled, and a new contact
        // leaves those fields as a new contact has them.
        m->putOnButton(0, u"Derived"_s, u"F0=26|F1=25|F2=777|F3=778|F4=0|F5=0|F6=0|F7=30|F8=0|F9=0"_s);
        SaveSetting(u"Pressed"_s, u"0"_s);
        start();
        QVERIFY(!m->widget<QPushButton>(u"cmdGrab(2)"_s)->isEnabled());
        m->type(0, u"New Person"_s);
        QTest::mouseClick(m->widget<QPushButton>(u"cmdNewContact"_s), Qt::LeftButton);
        QCOMPARE(contactRows(m->host.host.lookupIds().last()),
                 (QStringList{u"New Person"_s, u"Acme Ltée"_s, {}, u"Montréal"_s, {}, {}, {}}));
        QVERIFY(m->host.backend.calls.contains(u"LockWindowUpdate"_s));
        QVERIFY(m->host.backend.calls.contains(u"UnlockWindowUpdate"_s));
    }

    void contactManagerGoneDuringUpdate()
    {
        start();
        m->type(0, u"Written First"_s);
        m->type(1, u"Never Written"_s);
        m->prompter->scriptAnswer(Prompter::Yes);
        // Enough calls for the first row, then nothing answers: its old text is the one the capture read, and
        // whether it is a phone is known since then, so writing it is its one call.
        m->host.backend.budget = 1;
        QTest::mouseClick(m->widget<QPushButton>(u"cmdUpdateACT"_s), Qt::LeftButton);
        QVERIFY(m->prompter->prompts().last().text.contains(u"in frmMain: Sub cmdUpdateACT_Click"_s));
        m->host.backend.budget = -1;
        QCOMPARE(contactRows(m->host.ids[0]).mid(0, 2), (QStringList{u"Written First"_s, kOriginal[1]}));
        QVERIFY(!undo()->isEnabled()); // the update did not finish: undo does what it did before
    }
};

QTEST_MAIN(TestGrabWindow)
#include "tst_grabwindow.moc"
