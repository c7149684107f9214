// The Smart Data Collector: how grabbed lines are cleaned, walked and handed out, and the small window beside the
// main window that shows them.

#include "common/Prompter.h"
#include "grab/SmartDataCollector.h"
#include "grab/SmartParserWindow.h"

#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;

namespace {

// Test texts write the line end CR LF as "|".
QString crlf(QString text)
{
    return text.replace(u'|', u"\r\n"_s);
}

// Where the collector stands, in one comparable line: "#2 back next", "#1 back finished".
QString state(const SmartDataCollector& c)
{
    QString s = u"#"_s + QString::number(c.currentIndex());
    if (c.canGoBack())
        s += u" back"_s;
    if (c.canGoNext())
        s += u" next"_s;
    if (c.isFinished())
        s += u" finished"_s;
    return s;
}

} // namespace

class TestSmartDataCollector : public QObject {
    Q_OBJECT

    RecordingPrompter* m_prompter = nullptr;

private slots:
    void initTestCase()
    {
        auto prompter = std::make_unique<RecordingPrompter>();
        m_prompter = prompter.get();
        Prompter::install(std::move(prompter));
    }
    void cleanup()
    {
        // No error box: every procedure runs behind the trap, which would hide a failure from the test.
        QVERIFY2(m_prompter->prompts().isEmpty(), qPrintable(m_prompter->texts().join(u'\n')));
        m_prompter->clear();
    }

    void cleanLeading_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("codes next to the digits and letters") << u"/:@[`{ 9"_s << u"9"_s;
        QTest::newRow("A") << u"~A"_s << u"A"_s;
        QTest::newRow("Z") << u"~Z"_s << u"Z"_s;
        QTest::newRow("a") << u"~a"_s << u"a"_s;
        QTest::newRow("z") << u"~z"_s << u"z"_s;
        QTest::newRow("0") << u"~0"_s << u"0"_s;
        QTest::newRow("spaces off both ends") << u"  - x y  "_s << u"x y"_s;
        QTest::newRow("tab is punctuation") << u"\t x"_s << u"x"_s;
        QTest::newRow("nothing to keep") << u" -- ()  "_s << QString();
        QTest::newRow("accented letter stripped") << u"Élise"_s << u"lise"_s;
        // Upper-cases to 'I', but is no Latin letter itself.
        QTest::newRow("dotless i") << u"ıx"_s << u"x"_s;
    }
    void cleanLeading()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(SmartDataCollector::CleanLeading(text), expected);
    }

    void collector_data()
    {
        QTest::addColumn<QString>("text");
        // next, back, grab (the whole line), grab:START:LENGTH (a selection), current=TEXT, grabbed=TEXT (edits)
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QString>("current");
        QTest::addColumn<QString>("grabbed");
        QTest::addColumn<QString>("where");
        const QStringList none;
        const QStringList next{u"next"_s};

        QTest::newRow("only empty lines") << crlf(u"||"_s) << none << QString() << QString() << u"#0 finished"_s;
        QTest::newRow("trailing line end") << crlf(u"Acme|Main St|"_s) << next << u"Main St"_s << crlf(u"|"_s)
                                           << u"#1 back"_s;
        QTest::newRow("trailing line end never shown")
            << crlf(u"Acme|Main St|"_s) << QStringList{u"next"_s, u"next"_s} << QString() << crlf(u"|"_s)
            << u"#1 back finished"_s;
        QTest::newRow("label not at the start") << crlf(u"  --- Phone: (555) 123-4567|x"_s) << none
                                                << u"Phone: (555) 123-4567"_s << crlf(u"x|"_s) << u"#0 next"_s;
        QTest::newRow("label then punctuation") << crlf(u"Phone: (555) 123-4567|x"_s) << none << u"555) 123-4567"_s
                                                << crlf(u"x|"_s) << u"#0 next"_s;
        QTest::newRow("labels one after another")
            << crlf(u"Phone Fax 555|x"_s) << none << u"555"_s << crlf(u"x|"_s) << u"#0 next"_s;
        QTest::newRow("one-word label") << crlf(u"FirstName John|x"_s) << none << u"John"_s << crlf(u"x|"_s)
                                        << u"#0 next"_s;
        QTest::newRow("two-word label") << crlf(u"last name: Smith|x"_s) << none << u"Smith"_s << crlf(u"x|"_s)
                                        << u"#0 next"_s;
        QTest::newRow("label removed everywhere, any case")
            << crlf(u" ADDRESS: 12 address Lane|x"_s) << none << u"12  Lane"_s << crlf(u"x|"_s) << u"#0 next"_s;
        // Only spaces are trimmed before the label test.
        QTest::newRow("label after a tab") << crlf(u"\tPhone 555|x"_s) << none << u"Phone 555"_s << crlf(u"x|"_s)
                                           << u"#0 next"_s;
        QTest::newRow("accented first letter") << crlf(u"Élise|x"_s) << none << u"lise"_s << crlf(u"x|"_s)
                                               << u"#0 next"_s;
        QTest::newRow("label-only line shown empty") << crlf(u"Acme|Fax:|Bob"_s) << next << QString()
                                                     << crlf(u"Bob|"_s) << u"#1 back next"_s;
        QTest::newRow("label-only last line finishes")
            << crlf(u"Acme|Phone"_s) << next << QString() << QString() << u"#1 back finished"_s;
        QTest::newRow("middle line") << crlf(u"a|b|c"_s) << next << u"b"_s << crlf(u"c|"_s) << u"#1 back next"_s;
        QTest::newRow("last line") << crlf(u"a|b|c"_s) << QStringList{u"next"_s, u"next"_s} << u"c"_s << QString()
                                   << u"#2 back"_s;
        QTest::newRow("next from the last line finishes")
            << crlf(u"a|b|c"_s) << QStringList{u"next"_s, u"next"_s, u"next"_s} << QString() << QString()
            << u"#2 back finished"_s;
        QTest::newRow("blank lines skipped forward")
            << crlf(u"a|---|  |b"_s) << next << u"b"_s << QString() << u"#3 back"_s;
        QTest::newRow("back onto a blank line lands after it")
            << crlf(u"a|--|b"_s) << QStringList{u"next"_s, u"back"_s} << u"b"_s << QString() << u"#2 back"_s;
        QTest::newRow("no stepping back over a blank line")
            << crlf(u"a|--|b|c"_s) << QStringList{u"next"_s, u"next"_s, u"back"_s, u"back"_s} << u"b"_s
            << crlf(u"c|"_s) << u"#2 back next"_s;
        QTest::newRow("back to the first line")
            << crlf(u"a|b|c"_s) << QStringList{u"next"_s, u"next"_s, u"back"_s, u"back"_s} << u"a"_s
            << crlf(u"b|c|"_s) << u"#0 next"_s;
        // The first and last index count lines that are not empty as they stand, spaces included.
        QTest::newRow("spaces before the first line") << crlf(u"|  |a|b"_s) << none << u"a"_s << crlf(u"b|"_s)
                                                      << u"#2 back next"_s;
        QTest::newRow("empty lines before the first line") << crlf(u"||a|b"_s) << none << u"a"_s << crlf(u"b|"_s)
                                                           << u"#2 next"_s;
        QTest::newRow("spaces after the last line") << crlf(u"a|b|  "_s) << next << u"b"_s << crlf(u"  |"_s)
                                                    << u"#1 back next"_s;
        QTest::newRow("grab the whole line") << crlf(u"a|b"_s) << QStringList{u"grab"_s} << u"b"_s << QString()
                                             << u"#1 back"_s;
        QTest::newRow("grab the last line finishes")
            << crlf(u"a|b"_s) << QStringList{u"grab"_s, u"grab"_s} << QString() << QString()
            << u"#1 back finished"_s;
        QTest::newRow("selection at the end moves on")
            << crlf(u"Acme Ltd|b"_s) << QStringList{u"grab:5:3"_s} << u"b"_s << QString() << u"#1 back"_s;
        QTest::newRow("selection keeps the rest") << crlf(u"123 Main Street, Springfield|x"_s)
                                                  << QStringList{u"grab:0:15"_s} << u"Springfield"_s
                                                  << crlf(u"x|"_s) << u"#0 next"_s;
        QTest::newRow("text before the selection dropped")
            << crlf(u"Jean Tremblay, Acme|x"_s) << QStringList{u"grab:5:8"_s} << u"Acme"_s << crlf(u"x|"_s)
            << u"#0 next"_s;
        QTest::newRow("edited current line") << crlf(u"a|b"_s)
                                             << QStringList{u"current=Acme Ltd, Paris"_s, u"grab:0:8"_s}
                                             << u"Paris"_s << crlf(u"b|"_s) << u"#0 next"_s;
        QTest::newRow("CR or LF alone stays in the line")
            << crlf(u"a\nb\rc|d"_s) << none << u"a\nb\rc"_s << crlf(u"d|"_s) << u"#0 next"_s;
        // An edited txtGrabbed only changes what the finished test sees.
        QTest::newRow("edits are not a step") << crlf(u"a|b"_s) << QStringList{u"current="_s, u"grabbed=--"_s}
                                              << QString() << u"--"_s << u"#0 next"_s;
        QTest::newRow("typed into an empty grabbed box")
            << crlf(u"a|b"_s) << QStringList{u"next"_s, u"grabbed=more"_s, u"next"_s} << QString() << u"more"_s
            << u"#1 back"_s;
        QTest::newRow("more lines than a 16-bit index holds")
            << crlf(u"first|"_s + u"|"_s.repeated(40000) + u"last"_s) << QStringList{u"next"_s, u"back"_s}
            << u"last"_s << QString() << u"#40001 back"_s;
    }
    void collector()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, steps);
        SmartDataCollector c;
        QSignalSpy finished(&c, &SmartDataCollector::finished);
        c.Load(text);
        for (const QString& step : steps) {
            if (step == u"next")
                c.cmdUp_Click();
            else if (step == u"back")
                c.cmdDown_Click();
            else if (step == u"grab")
                c.RemoveText(false);
            else if (step.startsWith(u"grab:"))
                c.RemoveText(true, step.section(u':', 1, 1).toInt(), step.section(u':', 2, 2).toInt());
            else if (step.startsWith(u"current="))
                c.setCurrent(step.section(u'=', 1));
            else if (step.startsWith(u"grabbed="))
                c.setGrabbed(step.section(u'=', 1));
            else
                QFAIL(qPrintable(u"unknown step "_s + step));
        }
        QTEST(c.current(), "current");
        QTEST(c.grabbed(), "grabbed");
        QTEST(state(c), "where");
        QCOMPARE(finished.count(), c.isFinished() ? 1 : 0);
    }

    void window_data()
    {
        QTest::addColumn<QPoint>("mainAt");
        QTest::addColumn<bool>("roomOnTheLeft");
        QTest::newRow("room on the left") << QPoint(450, 120) << true;
        QTest::newRow("against the left edge") << QPoint(30, 120) << false;
    }
    void window()
    {
        QFETCH(QPoint, mainAt);
        QFETCH(bool, roomOnTheLeft);
        QWidget main;
        main.resize(220, 360);
        main.move(mainAt);
        main.show();
        QVERIFY(QTest::qWaitForWindowExposed(&main));

        QPointer<SmartParserWindow> w = new SmartParserWindow(crlf(u"Acme Ltd|Phone: 555|Jean, Paris"_s), &main);
        QSignalSpy unloaded(w.data(), &SmartParserWindow::unloaded);
        QCOMPARE(w->objectName(), u"frmSmartParser"_s);
        QCOMPARE(w->windowTitle(), u"Smart Data Collector"_s);
        QVERIFY(w->windowFlags().testFlags(Qt::Tool | Qt::WindowStaysOnTopHint));
        QVERIFY(w->testAttribute(Qt::WA_ShowWithoutActivating));
        QVERIFY(w->isVisible());
        auto* current = w->findChild<QLineEdit*>(u"txtCurrent"_s);
        auto* grabbed = w->findChild<QPlainTextEdit*>(u"txtGrabbed"_s);
        auto* up = w->findChild<QPushButton*>(u"cmdUp"_s);
        auto* down = w->findChild<QPushButton*>(u"cmdDown"_s);
        QVERIFY(current && grabbed && up && down);
        QCOMPARE(up->text(), u"&Next line"_s);
        QCOMPARE(down->text(), u"&Previous line"_s);

        // Beside the main window, centred on it; or against the edge of the screen when there is no room.
        QVERIFY(QTest::qWaitForWindowExposed(w));
        const QRect own = w->frameGeometry();
        const QRect beside = main.frameGeometry();
        const int screenLeft = main.screen()->availableGeometry().left();
        QCOMPARE(beside.left() - own.width() >= screenLeft, roomOnTheLeft);
        QCOMPARE(own.left(), roomOnTheLeft ? beside.left() - own.width() : screenLeft);
        QVERIFY2(qAbs(own.center().y() - beside.center().y()) <= 1, qPrintable(QString::number(own.top())));

        QCOMPARE(current->text(), u"Acme Ltd"_s);
        QCOMPARE(grabbed->toPlainText(), u"Phone: 555\nJean, Paris\n"_s);
        QVERIFY(up->isEnabled());
        QVERIFY(!down->isEnabled());

        // The keyboard: the buttons' mnemonics, and the tab order with both buttons enabled.
        w->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(w));
        QTest::keyClick(w, Qt::Key_N, Qt::AltModifier);
        QTRY_COMPARE(current->text(), u"555"_s); // a mnemonic clicks its button a moment later
        current->setFocus();
        for (QWidget* next : {static_cast<QWidget*>(down), static_cast<QWidget*>(up),
                              static_cast<QWidget*>(grabbed)}) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget(), next);
        }
        QTest::keyClick(w, Qt::Key_P, Qt::AltModifier);
        QTRY_COMPARE(current->text(), u"Acme Ltd"_s); // a mnemonic clicks its button a moment later
        QTest::mouseClick(up, Qt::LeftButton);
        QTest::mouseClick(up, Qt::LeftButton);
        QCOMPARE(current->text(), u"Jean, Paris"_s);
        QVERIFY(!up->isEnabled());
        QVERIFY(down->isEnabled());

        // What the user types into the boxes is what the next step works on.
        current->setFocus();
        current->selectAll();
        QTest::keyClicks(current, u"Jean Tremblay, Acme, Paris"_s);
        current->setSelection(15, 4);
        QCOMPARE(w->selectedText(), u"Acme"_s);
        w->RemoveText(true);
        QCOMPARE(w->currentText(), u"Paris"_s);
        grabbed->setFocus();
        QTest::keyClicks(grabbed, u"x"_s);
        w->RemoveText(false);
        QVERIFY(w->isVisible());
        QCOMPARE(unloaded.count(), 0);

        // Once nothing is left it closes itself, and says so once.
        grabbed->clear();
        current->setFocus();
        QTest::keyClicks(current, u"Paris"_s);
        current->selectAll();
        w->RemoveText(true);
        QVERIFY(!w->isVisible());
        QCOMPARE(unloaded.count(), 1);
        QTRY_VERIFY(w.isNull());
        QCOMPARE(unloaded.count(), 1);
    }

    void unloadedOnce_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("Escape") << u"escape"_s;
        QTest::newRow("main window destroyed") << u"destroy"_s;
        QTest::newRow("nothing to hand out") << u"empty"_s;
    }
    void unloadedOnce()
    {
        QFETCH(QString, how);
        auto main = std::make_unique<QWidget>();
        main->resize(220, 360);
        main->move(450, 120);
        main->show();
        QPointer<SmartParserWindow> w =
            new SmartParserWindow(how == u"empty" ? crlf(u"|  |"_s) : crlf(u"a|b"_s), main.get());
        QSignalSpy unloaded(w.data(), &SmartParserWindow::unloaded);
        if (how == u"escape") {
            w->activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(w));
            QTest::keyClick(w->findChild<QLineEdit*>(u"txtCurrent"_s), Qt::Key_Escape);
            QCOMPARE(unloaded.count(), 1);
        } else if (how == u"destroy") {
            main.reset();
            QVERIFY(w.isNull());
        } else {
            QVERIFY(!w->isVisible());
        }
        QTRY_VERIFY(w.isNull());
        QCOMPARE(unloaded.count(), 1);
    }
};

QTEST_MAIN(TestSmartDataCollector)
#include "tst_smartdatacollector.moc"
