// The Smart Data Collector: how grabbed lines are cleaned, walked and handed out. Its window is tst_grabwindow's.

#include "common/Prompter.h"
#include "grab/SmartDataCollector.h"

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
    return u"#%1%2%3%4"_s.arg(c.currentIndex())
        .arg(c.canGoBack() ? u" back"_s : QString(), c.canGoNext() ? u" next"_s : QString(),
             c.isFinished() ? u" finished"_s : QString());
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

    void cleanLeading()
    {
        // The codes either side of the digits and the letters go; the ends of the ranges stay.
        QCOMPARE(SmartDataCollector::CleanLeading(u"/:@[`{ 9"_s), u"9"_s);
        for (const QChar kept : u"AZaz0"_s)
            QCOMPARE(SmartDataCollector::CleanLeading(u"~"_s + kept), QString(kept));
        QCOMPARE(SmartDataCollector::CleanLeading(u"\t - x y  "_s), u"x y"_s);
        QCOMPARE(SmartDataCollector::CleanLeading(u"ıx"_s), u"x"_s); // upper-cases to 'I', but is no Latin letter
    }

    void collector_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("steps"); // next, back, grab (whole line), grab:START:LENGTH, grabbed=TEXT (an edit)
        QTest::addColumn<QString>("current");
        QTest::addColumn<QString>("grabbed");
        QTest::addColumn<QString>("where");
        const auto row = [](const char* name, const QString& text, const QString& steps, const QString& current,
                            const QString& grabbed, const QString& where) {
            QTest::newRow(name) << text << steps << current << grabbed << where;
        };
        row("only empty lines", u"||"_s, {}, {}, {}, u"#0 finished"_s);
        row("trailing line end never shown", u"Acme|Main St|"_s, u"next next"_s, {}, u"|"_s, u"#1 back finished"_s);
        row("label not at the start", u"  --- Phone: (555) 123-4567|x"_s, {}, u"Phone: (555) 123-4567"_s, u"x|"_s,
            u"#0 next"_s);
        row("labels one after another, then punctuation", u"Phone Fax: (555) 123-4567|x"_s, {}, u"555) 123-4567"_s,
            u"x|"_s, u"#0 next"_s);
        row("label removed everywhere, any case", u" ADDRESS: 12 address Lane|x"_s, {}, u"12  Lane"_s, u"x|"_s,
            u"#0 next"_s);
        row("label-only line shown empty", u"Acme|Fax:|Bob"_s, u"next"_s, {}, u"Bob|"_s, u"#1 back next"_s);
        row("back to the first line", u"a|b|c"_s, u"next back"_s, u"a"_s, u"b|c|"_s, u"#0 next"_s);
        row("back onto a blank line lands after it", u"a|--|b"_s, u"next back"_s, u"b"_s, {}, u"#2 back"_s);
        // The first index counts lines that are not empty as they stand, spaces included.
        row("spaces before the first line", u"|  |a|b"_s, {}, u"a"_s, u"b|"_s, u"#2 back next"_s);
        row("grab the last line finishes", u"a|b"_s, u"grab grab"_s, {}, {}, u"#1 back finished"_s);
        row("selection at the end moves on", u"Acme Ltd|b"_s, u"grab:5:3"_s, u"b"_s, {}, u"#1 back"_s);
        row("selection keeps the rest", u"Jean Tremblay, Acme, Paris|x"_s, u"grab:5:8"_s, u"Acme, Paris"_s, u"x|"_s,
            u"#0 next"_s);
        row("CR or LF alone stays in the line", u"a\nb\rc|d"_s, {}, u"a\nb\rc"_s, u"d|"_s, u"#0 next"_s);
        row("typed into an empty grabbed box", u"a|b"_s, u"next grabbed=more next"_s, {}, u"more"_s, u"#1 back"_s);
        row("more lines than a 16-bit index holds", u"first|"_s + u"|"_s.repeated(40000) + u"last"_s, u"next back"_s,
            u"last"_s, {}, u"#40001 back"_s);
    }
    void collector()
    {
        QFETCH(QString, text);
        QFETCH(QString, steps);
        SmartDataCollector c;
        QSignalSpy finished(&c, &SmartDataCollector::finished);
        c.Load(crlf(text));
        for (const QString& step : steps.split(u' ', Qt::SkipEmptyParts)) {
            if (step == u"next")
                c.cmdUp_Click();
            else if (step == u"back")
                c.cmdDown_Click();
            else if (step == u"grab")
                c.RemoveText(false);
            else if (step.startsWith(u"grab:"))
                c.RemoveText(true, step.section(u':', 1, 1).toInt(), step.section(u':', 2, 2).toInt());
            else
                c.setGrabbed(step.section(u'=', 1));
        }
        QTEST(c.current(), "current");
        QFETCH(QString, grabbed);
        QCOMPARE(c.grabbed(), crlf(grabbed));
        QTEST(state(c), "where");
        QCOMPARE(finished.count(), c.isFinished() ? 1 : 0);
    }
};

QTEST_GUILESS_MAIN(TestSmartDataCollector)
#include "tst_smartdatacollector.moc"
