#include "common/ErrorTrap.h"
#include "common/Prompter.h"
#include "common/VbRuntime.h"

#include <QTest>

using namespace corvalent;

namespace {

int g_failingLine = 0;

// A procedure as the program writes them: its body behind the trap, the failing call on a known line.
QString procedureThatFails(const QString& text)
{
    return trapped(QStringLiteral("frmMain: Function Sample"), QStringLiteral("fallback"), [&] {
        QString result = QStringLiteral("half done");
        g_failingLine = __LINE__ + 1;
        result += QString::number(CInt(text));
        return result;
    });
}

} // namespace

class TestErrorTrap : public QObject {
    Q_OBJECT

    RecordingPrompter* m_prompter = nullptr;

private slots:
    void init()
    {
        m_prompter = new RecordingPrompter;
        Prompter::install(std::unique_ptr<Prompter>(m_prompter));
    }

    // Only a failure shows the box: number, description, the procedure and the caller's line.
    void messageNamesNumberDescriptionLocationAndCallersLine()
    {
        QCOMPARE(procedureThatFails(QStringLiteral("12")), QStringLiteral("half done12"));
        QVERIFY(m_prompter->prompts().isEmpty());
        QCOMPARE(procedureThatFails(QStringLiteral("abc")), QStringLiteral("fallback"));
        QCOMPARE(m_prompter->prompts().size(), 1);
        const auto& prompt = m_prompter->prompts().first();
        QCOMPARE(prompt.caption, QStringLiteral("Corvalent error"));
        QCOMPARE(prompt.style, int(Prompter::Critical));
        const QString expectedStart = QStringLiteral("Error 13: 'Type mismatch'\rin frmMain: Function Sample - Line # %1\r\r")
                                          .arg(g_failingLine);
        QVERIFY2(prompt.text.startsWith(expectedStart), qPrintable(prompt.text));
        QVERIFY(prompt.text.contains(QString::fromLatin1(kSupportAddress)));
    }

    void foreignExceptionsAreTrappedToo()
    {
        QVERIFY(!trappedSub(QStringLiteral("modTest: Sub Foreign"), [] { throw std::runtime_error("boom"); }));
        QCOMPARE(m_prompter->prompts().size(), 1);
        QVERIFY(m_prompter->prompts().first().text.contains(QStringLiteral("'boom'\rin modTest: Sub Foreign - Line # ")));
    }

    void scriptedAnswersThenDefaultButtons_data()
    {
        QTest::addColumn<int>("style");
        QTest::addColumn<int>("defaultAnswer");
        QTest::newRow("ok only") << 0 << int(Prompter::Ok);
        QTest::newRow("plain yes/no") << 4 << int(Prompter::Yes);
        QTest::newRow("stop, No default") << 276 << int(Prompter::No);
    }
    void scriptedAnswersThenDefaultButtons()
    {
        QFETCH(int, style);
        QFETCH(int, defaultAnswer);
        m_prompter->scriptAnswer(Prompter::Yes);
        QCOMPARE(Prompter::instance().message(QStringLiteral("first"), style), int(Prompter::Yes));
        QCOMPARE(Prompter::instance().message(QStringLiteral("second"), style), defaultAnswer);
        QCOMPARE(m_prompter->prompts().at(1).caption, QStringLiteral("Corvalent"));
    }
};

QTEST_GUILESS_MAIN(TestErrorTrap)
#include "tst_errortrap.moc"
