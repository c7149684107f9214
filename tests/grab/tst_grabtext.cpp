// Which window a grab copies from, and what it makes of the text that comes back.

#include "grab/GrabText.h"
#include "support/ScriptedDesktop.h"

#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;
using W = test::ScriptedWindow;

namespace {

// "title" then ";"-separated marks: hidden, child, tool, owner=N, mute (never copies), behind (never comes to the
// front), class=NAME. The selection a window copies is "from N", N being its place from the top, counted from 1.
QList<W> parseWindows(const QStringList& lines)
{
    QList<W> windows;
    for (const QString& line : lines) {
        const QStringList marks = line.split(u';');
        W w = W::named(marks.first(), u"from %1"_s.arg(windows.size() + 1));
        w.visible = !marks.contains(u"hidden"_s);
        w.child = marks.contains(u"child"_s);
        w.tool = marks.contains(u"tool"_s);
        w.copies = !marks.contains(u"mute"_s);
        w.activates = !marks.contains(u"behind"_s);
        w.owner = marks.filter(u"owner="_s).value(0).mid(6).toULongLong();
        w.programNames = marks.filter(u"class="_s).replaceInStrings(u"class="_s, QString());
        windows << w;
    }
    return windows;
}

} // namespace

class TestGrabText : public QObject {
    Q_OBJECT
private slots:
    void findsTheBrowser_data()
    {
        // The windows below ours, topmost first. Ours, on top, has a browser's title: it is never looked at.
        QTest::addColumn<QStringList>("windows");
        QTest::addColumn<QString>("grabbed");
        const QString firefox = u"Results — Mozilla Firefox"_s;
        QTest::newRow("none below ours") << QStringList{} << QString();
        QTest::newRow("any case, any program") << QStringList{u"notes about mOzIlLa.txt - Editor"_s} << u"from 2"_s;
        QTest::newRow("Netscape") << QStringList{u"Terminal"_s, u"Netscape Navigator"_s} << u"from 3"_s;
        QTest::newRow("hidden skipped") << QStringList{firefox + u";hidden"_s, firefox} << u"from 3"_s;
        QTest::newRow("child skipped") << QStringList{firefox + u";child"_s, firefox} << u"from 3"_s;
        QTest::newRow("tool skipped") << QStringList{firefox + u";tool"_s, firefox} << u"from 3"_s;
        QTest::newRow("dialog of a browser skipped") << QStringList{u"Mozilla: Save As;owner=3"_s, firefox}
                                                     << u"from 3"_s;
        QTest::newRow("owned by a tool window kept") << QStringList{u"Mozilla viewer;owner=3"_s, u"palette;tool"_s}
                                                     << u"from 2"_s;
        QTest::newRow("known by its program, any case") << QStringList{u"Search - Google;class=Google-chrome"_s}
                                                        << u"from 2"_s;
        QTest::newRow("unknown program") << QStringList{u"Search - Google;class=gedit"_s} << QString();
        QTest::newRow("title word past 255 characters") << QStringList{QString(255, u'x') + u"Mozilla"_s} << QString();
        QTest::newRow("browser that never copies") << QStringList{firefox + u";mute"_s} << QString();
        QTest::newRow("browser that stays behind") << QStringList{firefox + u";behind"_s} << QString();
    }
    void findsTheBrowser()
    {
        QFETCH(QStringList, windows);
        QFETCH(QString, grabbed);
        test::ScriptedDesktop desktop(parseWindows(QStringList{u"Corvalent — Mozilla Firefox"_s} + windows));
        desktop.clipboard = u"what the user copied before"_s;
        GrabText grab(desktop);
        QCOMPARE(grab.GrabBrowserText(), grabbed);
        // The clipboard is emptied before the walk, whatever it finds.
        QCOMPARE(desktop.log.value(0), u"clear"_s);
        // Ctrl+C goes only to a browser that came to the front, and it is brought to the front again after the copy.
        QCOMPARE(desktop.log.contains(u"copy"_s), !grabbed.isEmpty() || windows.join(u' ').contains(u"mute"_s));
        if (!grabbed.isEmpty()) {
            const QString activate = u"activate "_s + grabbed.mid(5);
            QCOMPARE(desktop.log, (QStringList{u"clear"_s, u"clear"_s, activate, u"copy"_s, activate}));
        }
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

    void withoutWindowsTheHighlightedTextIsTaken()
    {
        test::ScriptedDesktop desktop({}, /* drivable */ false);
        // Two megabytes of lines, as a page selected whole might give.
        desktop.primary = u"A line of a long page\n"_s.repeated(2 * GrabText::kMaxGrabChars / 22 + 1);
        GrabText grab(desktop);
        const QString text = grab.GrabBrowserText();
        QVERIFY(grab.lastGrabWasCut());
        QVERIFY(text.size() <= GrabText::kMaxGrabChars);
        QVERIFY(text.startsWith(u"A line of a long page\r\nA line"_s));
        QVERIFY(!desktop.log.contains(u"copy"_s));
    }
};

QTEST_GUILESS_MAIN(TestGrabText)
#include "tst_grabtext.moc"
