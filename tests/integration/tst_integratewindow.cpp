// The integration window against the contact manager's model: the twelve boxes, the command it adds the first
// time, the failure message, and the restart it offers on Close.

#include "../app/WindowFixture.h"

#include "integration/IntegrateWindow.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QLabel>
#include <QSignalSpy>

using namespace corvalent;
using namespace Qt::StringLiterals;

namespace {

QCheckBox* box(QWidget* w, int index)
{
    return w->findChild<QCheckBox*>(u"chkScreen(%1)"_s.arg(index));
}

} // namespace

class TestIntegrateWindow : public QObject {
    Q_OBJECT

    std::unique_ptr<test::WindowFixture> m;

    host::ContactStore& store() { return m->host.host.store(); }

    QPointer<IntegrateWindow> open(MainWindow& main)
    {
        main.findChild<QAction*>(u"mnuIntegrate"_s)->trigger();
        return main.findChild<IntegrateWindow*>(u"frmIntegrate"_s);
    }

private slots:
    void init() { m = std::make_unique<test::WindowFixture>(); }
    void cleanup() { m.reset(); }

    // The boxes show what the contact manager holds, and each box adds or removes its button or entry in its view.
    void boxes()
    {
        store().addAuxCommand({u"Corvalent"_s, u"/old/corvalent"_s, u"/old"_s, u"Corvalent"_s, {}, {}, {}, 1});
        store().setAuxCommandInToolsMenu(u"Corvalent"_s, 4, true);
        store().setAuxCommandInToolsMenu(u"Corvalent"_s, 4, true);
        MainWindow& main = m->start();
        QPointer<IntegrateWindow> w = open(main);
        QVERIFY(w && w->isModal());
        QCOMPARE(w->windowTitle(), u"Integrate with Corvalent Contacts"_s);
        const QStringList views{u"Contacts"_s, u"Contact List"_s, u"Groups"_s, u"Task List"_s, u"Calendars"_s,
                                u"E-mail"_s};
        for (int i = 0; i < 12; ++i)
            QCOMPARE(box(w, i)->isChecked(), i == 9);
        for (int i = 0; i < 6; ++i)
            QCOMPARE(w->findChild<QLabel*>(u"lblScreen(%1)"_s.arg(i))->text(), views[i]);

        QTest::mouseClick(box(w, 7), Qt::LeftButton);            // Tools menu, view 2
        QTest::mouseClick(box(w, 9), Qt::LeftButton);            // Tools menu, view 4: cleared
        QTest::mouseClick(w->findChild<QLabel*>(u"lblScreen(4)"_s), Qt::LeftButton); // toolbar, view 5
        QVERIFY(store().auxCommandInToolsMenu(u"Corvalent"_s, 2));
        QVERIFY(!store().auxCommandInToolsMenu(u"Corvalent"_s, 4));
        QCOMPARE(store().toolbarCommands(5), QStringList{u"Corvalent"_s});
        QVERIFY(box(w, 4)->isChecked());
        // Known already: the command stays as it was.
        QCOMPARE(store().auxCommand(u"Corvalent"_s)->program, u"/old/corvalent"_s);
        QVERIFY(m->prompter->prompts().isEmpty());
    }

    // The first box checked adds the program with the eight values. Close after a change tells the failure again,
    // or offers the restart; Yes closes the main window with the restart set, which closes the contact manager,
    // opens its database again and ends the program. No is tst_mainwindow's hostNamedTexts.
    void close_data()
    {
        QTest::addColumn<bool>("addFails");
        QTest::newRow("added, restart now") << false;
        QTest::newRow("adding failed") << true;
    }

    void close()
    {
        QFETCH(bool, addFails);
        if (addFails)
            m->host.backend.answers.insert(u"AddAuxCommand"_s, qint32(1));
        MainWindow& main = m->start();
        const QString database = main.session().getOpenDbName();
        QSignalSpy closeAsked(&m->host.host, &host::ContactHost::closeRequested);
        QSignalSpy ended(&main.follower(), &HostFollower::endProgram);
        QPointer<IntegrateWindow> w = open(main);
        QTest::mouseClick(box(w, 0), Qt::LeftButton);
        if (!addFails) {
            const auto command = store().auxCommand(u"Corvalent"_s);
            QVERIFY(command);
            QCOMPARE(command->program, QCoreApplication::applicationFilePath());
            QCOMPARE(command->folder, QCoreApplication::applicationDirPath());
            QCOMPARE(command->title, u"Corvalent"_s);
            QCOMPARE(command->hint, u"click to launch Corvalent"_s);
            QVERIFY(command->smallIcon.endsWith(u"/share/icons/hicolor/16x16/apps/corvalent.png"_s));
            QVERIFY(command->largeIcon.endsWith(u"/share/icons/hicolor/32x32/apps/corvalent.png"_s));
            QCOMPARE(command->flags, 1);
            QVERIFY(store().toolbarCommands(1).contains(u"Corvalent"_s));
        }
        m->prompter->scriptAnswer(Prompter::Yes);
        QTest::mouseClick(w->findChild<QPushButton*>(u"cmdOK"_s), Qt::LeftButton);
        QTRY_VERIFY(w.isNull());
        QCOMPARE(main.isVisible(), addFails);
        QCOMPARE(main.follower().RestartPending, !addFails);
        QCOMPARE(closeAsked.count(), addFails ? 0 : 1);
        if (addFails) {
            QCOMPARE(m->prompter->texts(), QStringList(2, IntegrateWindow::kFailureMessage));
            QVERIFY(m->launcher->opened().isEmpty());
            return;
        }
        QCOMPARE(m->prompter->prompts().size(), 1); // the restart question, whose text is tst_mainwindow's
        QCOMPARE(m->prompter->prompts()[0].style, int(Prompter::YesNo));
        QCOMPARE(m->launcher->opened().size(), 1);
        QCOMPARE(m->launcher->opened().first().target, database);
        // The program ends once the contact manager has had time to close.
        QCOMPARE(ended.count(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 1, 10000);
    }
};

QTEST_MAIN(TestIntegrateWindow)
#include "tst_integratewindow.moc"
