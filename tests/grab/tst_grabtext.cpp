// Which window a grab copies from, and what it makes of the text that comes back.

#include "grab/GrabText.h"
#include "support/ScriptedDesktop.h"

#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;
using W = test::ScriptedWindow;

class TestGrabText : public QObject {
    Q_OBJECT
private slots:
    void findsTheBrowser_data()
    {
        QTest::addColumn<QList<W>>("windows"); // topmost first; the first is our own window
        QTest::addColumn<QString>("grabbed"); // a window copies "from N", N its place from the top counted from 1
        const W ours{.title = u"Corvalent"_s};
        const W firefox{.title = u"Results — Mozilla Firefox"_s};
        QTest::newRow("only the topmost") << QList<W>{firefox} << QString();
        QTest::newRow("any case, any program")
            << QList<W>{ours, {.title = u"notes about mOzIlLa.txt - Editor"_s}, firefox} << u"from 2"_s;
        QTest::newRow("Netscape") << QList<W>{ours, {.title = u"Terminal"_s}, {.title = u"Netscape Navigator"_s}}
                                  << u"from 3"_s;
        QTest::newRow("hidden skipped") << QList<W>{ours, {.title = firefox.title, .visible = false}, firefox}
                                        << u"from 3"_s;
        QTest::newRow("child skipped") << QList<W>{ours, {.title = firefox.title, .child = true}, firefox}
                                       << u"from 3"_s;
        QTest::newRow("tool skipped") << QList<W>{ours, {.title = firefox.title, .tool = true}, firefox}
                                      << u"from 3"_s;
        QTest::newRow("dialog of a browser skipped")
            << QList<W>{ours, {.title = u"Mozilla: Save As"_s, .owner = 3}, firefox} << u"from 3"_s;
        QTest::newRow("owned by a tool window kept")
            << QList<W>{ours, {.title = u"Mozilla viewer"_s, .owner = 3}, {.title = u"palette"_s, .tool = true}}
            << u"from 2"_s;
        QTest::newRow("known by its program, any case")
            << QList<W>{ours, {.title = u"Search - Google"_s, .programNames = {u"Google-chrome"_s}}} << u"from 2"_s;
        QTest::newRow("unknown program")
            << QList<W>{ours, {.title = u"Search - Google"_s, .programNames = {u"gedit"_s}}} << QString();
        QTest::newRow("title word past 255 characters")
            << QList<W>{ours, {.title = QString(255, u'x') + u"Mozilla"_s}} << QString();
        QTest::newRow("browser that never copies")
            << QList<W>{ours, {.title = firefox.title, .copies = false}} << QString();
        QTest::newRow("browser that stays behind")
            << QList<W>{ours, {.title = firefox.title, .activates = false}} << QString();
        QTest::newRow("no windows") << QList<W>{} << QString();
    }
    void findsTheBrowser()
    {
        QFETCH(QList<W>, windows);
        QFETCH(QString, grabbed);
        for (qsizetype i = 0; i < windows.size(); ++i)
            windows[i].selection = u"from %1"_s.arg(i + 1);
        test::ScriptedDesktop desktop(windows);
        desktop.clipboard = u"what the user copied before"_s;
        GrabText grab(desktop);
        QCOMPARE(grab.GrabBrowserText(), grabbed);
        // The clipboard is emptied before the walk, whatever it finds.
        QCOMPARE(desktop.log.value(0), u"clear"_s);
        // Ctrl+C goes only to a browser that came to the front.
        const bool mute = std::any_of(windows.cbegin(), windows.cend(), [](const W& w) { return !w.copies; });
        QCOMPARE(desktop.log.contains(u"copy"_s), !grabbed.isEmpty() || mute);
    }

    void copiesAfterActivating()
    {
        test::ScriptedDesktop desktop({W::named(u"Corvalent"_s), W::named(u"Mozilla Firefox"_s)});
        GrabText grab(desktop);
        grab.GrabBrowserText();
        QCOMPARE(desktop.log, (QStringList{u"clear"_s, u"clear"_s, u"activate 2"_s, u"copy"_s, u"activate 2"_s}));
    }

    void normalizes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("max");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<bool>("cut");
        QTest::newRow("LF, CR LF, lone CR, LF CR") << u"a\nb\r\nc\rd\n\re"_s << 100 << u"a\r\nb\r\nc\r\nd\r\n\r\ne"_s
                                                   << false;
        QTest::newRow("NULs dropped") << QString::fromUtf16(u"a\0b\0", 4) << 100 << u"ab"_s << false;
        QTest::newRow("break not halved by the cut") << u"abc\nd"_s << 4 << u"abc"_s << true;
        QTest::newRow("character not halved by the cut") << u"ab😀"_s << 3 << u"ab"_s << true;
        QTest::newRow("just fits") << u"ab😀"_s << 4 << u"ab😀"_s << false;
    }
    void normalizes()
    {
        QFETCH(QString, text);
        QFETCH(int, max);
        QFETCH(bool, cut);
        bool wasCut = !cut;
        QTEST(GrabText::NormalizeGrabbedText(text, max, &wasCut), "expected");
        QCOMPARE(wasCut, cut);
    }

    void aMegabyteAndMoreIsCut()
    {
        // Two megabytes of lines, as a page selected whole might give.
        const QString page = u"A line of a long page\n"_s.repeated(2 * GrabText::kMaxGrabChars / 22 + 1);
        test::ScriptedDesktop desktop({W::named(u"Corvalent"_s), W::named(u"Mozilla Firefox"_s, page)});
        GrabText grab(desktop);
        const QString text = grab.GrabBrowserText();
        QVERIFY(grab.lastGrabWasCut());
        QVERIFY(text.size() <= GrabText::kMaxGrabChars);
        QVERIFY(text.startsWith(u"A line of a long page\r\nA line"_s));
    }

    void withoutWindowsTheHighlightedTextIsTaken()
    {
        test::ScriptedDesktop desktop({}, /* drivable */ false);
        desktop.primary = u"Springfield\nIL"_s;
        GrabText grab(desktop);
        QCOMPARE(grab.GrabBrowserText(), u"Springfield\r\nIL"_s);
        QVERIFY(!desktop.log.contains(u"copy"_s));
    }
};

QTEST_GUILESS_MAIN(TestGrabText)
#include "tst_grabtext.moc"
