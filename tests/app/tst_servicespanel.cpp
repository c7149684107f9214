// The services panel of the main window and what hangs on the chosen service: the captions and layout, the boxes
// a press captures, the request GO sends, and the colour scheme.

#include "WindowFixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QListWidget>
#include <QRadioButton>
#include <QToolButton>

using namespace corvalent;
using namespace Qt::StringLiterals;

namespace {

const QString kOwnRows = u"Base=2|F0=26|F1=25|F2=65|F3=67|F7=80|L7=User 1|L9="_s;

} // namespace

class TestServicesPanel : public QObject {
    Q_OBJECT

    std::unique_ptr<test::WindowFixture> m;

private slots:
    void init() { m = std::make_unique<test::WindowFixture>(); }
    void cleanup() { m.reset(); }

    // A press makes the button's service the current one, captures its rows and lays the window out for its
    // type: a hidden row takes no room, so the window keeps its width and its height follows what is shown. Text
    // typed in a row whose field all the services share stays; which rows keep what is tst_contactcapture's.
    void pressButton_data()
    {
        QTest::addColumn<int>("button");
        QTest::addColumn<QString>("service");
        QTest::addColumn<QStringList>("boxes"); // "SLOT=TEXT" of the rows that tell the services apart
        QTest::addColumn<QStringList>("labels");
        QTest::addColumn<bool>("options");
        QTest::addColumn<bool>("phones");
        const QStringList custom{u"Custom1"_s, u"Custom2"_s, u"Custom3"_s};
        QTest::newRow("address (Base 0)") << 0 << u"OpenStreetMap address"_s
                                          << QStringList{u"0=typed"_s, u"2=1500 Rue Peel"_s, u"7="_s}
                                          << custom << true << false;
        QTest::newRow("phone (Base 1)") << 1 << u"Own phone"_s << QStringList{u"0=typed"_s, u"7=Acme Ltée"_s}
                                        << QStringList{u"Phone"_s, u"Custom2"_s, u"Custom3"_s} << false << true;
        QTest::newRow("phone rows, longer captions")
            << 2 << u"Area code lookup"_s << QStringList{u"0=typed"_s, u"2=1500 Rue Peel"_s}
            << QStringList{u"Area code"_s, u"Exchange"_s, u"Custom3"_s} << false << true;
        QTest::newRow("other (Base 2), own rows")
            << 3 << u"Own rows"_s
            << QStringList{u"0=typed"_s, u"2=12B Main St"_s, u"3=Laval"_s, u"4="_s, u"7=u1 A"_s}
            << QStringList{u"User 1"_s, u"Custom2"_s, u"Custom3"_s} << false << false;
    }
    void pressButton()
    {
        QFETCH(int, button);
        QFETCH(QString, service);
        QFETCH(QStringList, boxes);
        QFETCH(QStringList, labels);
        QFETCH(bool, options);
        QFETCH(bool, phones);
        m->putOnButton(1, u"Own phone"_s, u"Base=1|F0=26|F7=25|L7=Phone"_s);
        m->putOnButton(3, u"Own rows"_s, kOwnRows);
        MainWindow& w = m->start();
        // with the address service of button 0, which shows the address options
        const QSize size = w.size();
        m->type(0, u"typed"_s);
        if (button == 0)
            m->press(3);
        m->press(button);
        for (int i = 0; i < 4; ++i)
            QCOMPARE(m->serviceButton(i)->isChecked(), i == button);
        QCOMPARE(test::stored(u"Pressed"_s), QString::number(button));
        QCOMPARE(w.focusWidget(), m->widget(u"cmdGO"_s));
        QCOMPARE(w.currentServiceFile(), m->serviceFile(service));
        for (const QString& item : boxes)
            QCOMPARE(m->box(item.section(u'=', 0, 0).toInt())->text(), item.section(u'=', 1));
        for (int row = 7; row <= 9; ++row)
            QCOMPARE(m->widget<QLabel>(u"lblField(%1)"_s.arg(row))->text(), labels[row - 7]);
        QCOMPARE(m->widget(u"fraOptions"_s)->isVisible(), options);
        QCOMPARE(m->widget(u"fraPhone"_s)->isVisible(), phones);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        QCOMPARE(w.width(), size.width());
        QCOMPARE(w.height() < size.height(), !options && !phones);
        QWidget* above = m->widget(options ? u"fraOptions"_s : phones ? u"fraPhone"_s : u"fraContactInformation"_s);
        QWidget* close = m->widget(u"chkClose"_s);
        QVERIFY(close->geometry().top() - above->geometry().bottom() - 1 <= close->parentWidget()->layout()->spacing());
    }

    // A button whose service is gone takes no press: the service, the stored button and the typed text stay.
    void buttonWithoutService()
    {
        WriteKeyValue(u"Buttons"_s, u"4"_s, u"Not there"_s, SettingsFilePath());
        MainWindow& w = m->start();
        m->type(0, u"typed"_s);
        m->press(3);
        QVERIFY(!m->serviceButton(3)->isChecked());
        QVERIFY(m->serviceButton(0)->isChecked());
        QCOMPARE(w.currentServiceFile(), m->serviceFile(test::kShippedButtons[0]));
        QCOMPARE(test::stored(u"Pressed"_s), u"<none>"_s);
        QCOMPARE(m->box(0)->text(), u"typed"_s);
    }

    // The arrow beside a button opens the list of services on the current one. A click on a service puts it on the
    // button, cut to fit with the whole name as a tooltip; a list left for another control, even one that takes no
    // focus, goes away and puts nothing on the button.
    void chooseFromList_data()
    {
        QTest::addColumn<int>("button");
        QTest::addColumn<QString>("name");     // of the service clicked; "": none
        QTest::addColumn<QString>("fileName"); // what Buttons then holds
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("clicked");  // the control left for, when no service is clicked
        QTest::newRow("long name cut on the button")
            << 1 << u"Regional business registry search"_s << u"Regional business registry search"_s
            << u"Regional business regi"_s << QString();
        QTest::newRow("dots stored as ~") << 2 << u"maps.example v2.0"_s << u"maps~example v2~0"_s
                                          << u"maps.example v2.0"_s << QString();
        QTest::newRow("left for a box") << 1 << QString() << test::kShippedButtons[1] << test::kShippedButtons[1]
                                        << u"txtField(5)"_s;
        QTest::newRow("left for a caption") << 1 << QString() << test::kShippedButtons[1]
                                            << test::kShippedButtons[1] << u"lblZip"_s;
    }
    void chooseFromList()
    {
        QFETCH(int, button);
        QFETCH(QString, name);
        QFETCH(QString, fileName);
        QFETCH(QString, caption);
        QFETCH(QString, clicked);
        if (!name.isEmpty())
            test::writeService(m->host.home, u"Name="_s + name + u"|URL=h/s?|Base=2|F0=26|F1=25|L7=Chosen"_s, fileName);
        MainWindow& w = m->start();
        w.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        auto list = m->widget<QListWidget>(u"lstServices(%1)"_s.arg(button));
        auto arrow = m->widget<QToolButton>(u"chkdropdown(%1)"_s.arg(button));
        QVERIFY(!list->isVisible());
        QTest::mouseClick(arrow, Qt::LeftButton);
        QTRY_VERIFY(list->hasFocus());
        QVERIFY(arrow->isChecked());
        QCOMPARE(list->count(), name.isEmpty() ? 6 : 7); // the six shipped services, and the test's own
        QCOMPARE(list->currentItem()->text(), test::kShippedButtons[0]);
        if (name.isEmpty()) {
            QTest::mouseClick(m->widget(clicked), Qt::LeftButton);
        } else {
            const QList<QListWidgetItem*> found = list->findItems(name, Qt::MatchExactly);
            QCOMPARE(found.size(), 1);
            list->scrollToItem(found[0]);
            QTRY_VERIFY(!list->visualItemRect(found[0]).isEmpty());
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(found[0]).center());
        }
        QTRY_VERIFY(!list->isVisible());
        QVERIFY(!arrow->isChecked());
        QCOMPARE(GetKeyValue(u"Buttons"_s, QString::number(button + 1), {}, {}, {}, SettingsFilePath()), fileName);
        QCOMPARE(m->serviceButton(button)->text(), caption);
        QCOMPARE(m->serviceButton(button)->isChecked(), !name.isEmpty());
        QCOMPARE(m->serviceButton(0)->isChecked(), name.isEmpty());
        if (name.isEmpty())
            return;
        QCOMPARE(m->serviceButton(button)->toolTip().startsWith(name + u'\n'), caption != name);
        QCOMPARE(w.currentServiceFile(), m->serviceFile(fileName));
        QCOMPARE(test::stored(u"Pressed"_s), QString::number(button));
        QCOMPARE(m->widget<QLabel>(u"lblField(7)"_s)->text(), u"Chosen"_s);
    }

    // The phone list shows the phone the rows read: Business's own phone until another one is picked.
    void phoneListShowsThePhoneUsed()
    {
        m->start();
        m->press(2); // Area code lookup: phone-based, the area code and exchange in rows 7 and 8
        auto phones = m->widget<QComboBox>(u"cboPhone"_s);
        QVERIFY(phones->isVisible());
        QCOMPARE(phones->currentData().toInt(), 35);
        QCOMPARE(m->boxes().mid(7, 2), QStringList({u"514"_s, u"555"_s}));
        const int home = phones->findData(37);
        phones->setCurrentIndex(home);
        emit phones->activated(home);
        QCOMPARE(m->boxes().mid(7, 2), QStringList({u"450"_s, u"555"_s}));
    }

    // With Custom restored at start-up, the phone rows read the phone the list shows, not a default of their own.
    void startupCustomReadsTheListedPhone()
    {
        SaveSetting(u"Option"_s, u"2"_s);
        SaveSetting(u"Pressed"_s, u"2"_s);
        m->start();
        auto phones = m->widget<QComboBox>(u"cboPhone"_s);
        QCOMPARE(phones->currentData().toInt(), 37);
        QCOMPARE(m->box(7)->text(), u"450"_s);
    }

    // Each service comes back with the address option last chosen for it.
    void optionPerService()
    {
        m->start();
        auto option = [&](int i) { return m->widget<QRadioButton>(u"optOption(%1)"_s.arg(i)); };
        QTest::mouseClick(option(1), Qt::LeftButton);
        QCOMPARE(test::stored(u"OpenStreetMap address_option"_s), u"1"_s);
        m->press(1);
        QTest::mouseClick(option(2), Qt::LeftButton);
        QCOMPARE(test::stored(u"OpenCorporates_option"_s), u"2"_s);
        m->press(0);
        QVERIFY(option(1)->isChecked());
        m->press(1);
        QVERIFY(option(2)->isChecked());
    }

    // Choosing Home shows the home address at once, and a phone picked in the list shows in the phone row; what
    // was typed in the other rows stays.
    void choicesShowAtOnce()
    {
        m->putOnButton(0, u"Steered"_s, QString(test::kRows).replace(u"F7=0"_s, u"F7=888"_s));
        m->start();
        m->type(0, u"typed"_s);
        QTest::mouseClick(m->widget<QRadioButton>(u"optOption(1)"_s), Qt::LeftButton);
        QCOMPARE(m->boxes().mid(0, 7),
                 QStringList({u"typed"_s, u"Acme Ltée"_s, u"12B Main St"_s, u"Laval"_s, u"QC"_s, u"H7A 1A1"_s,
                              u"Home Canada"_s}));
        QCOMPARE(m->box(7)->text(), u"(450) 555-0111"_s); // Home's phone

        auto phones = m->widget<QComboBox>(u"cboPhone"_s);
        const int fax = phones->findData(38);
        QVERIFY(fax >= 0);
        phones->setCurrentIndex(fax);
        emit phones->activated(fax);
        QVERIFY(m->widget<QRadioButton>(u"optOption(2)"_s)->isChecked());
        QCOMPARE(m->box(7)->text(), u"(514) 555-0100"_s);
        QCOMPARE(m->box(0)->text(), u"typed"_s);
    }

    // GO sends the boxes as they stand and closes the window unless it is kept open; how the request is built
    // from a service and the messages of GO are tst_go's.
    void go_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<bool>("keepOpen");
        QTest::addColumn<QString>("opened"); // "": nothing
        QTest::addColumn<QString>("message");
        const QString find = u"URL=h/find.asp?|V0=name|V3=city|V5=&pc"_s;
        const QString typed = u"http://h/find.asp?name=Jean Tremblay&city=Quebec&pc=G1R 4P5"_s;
        QTest::newRow("boxes as edited") << find << false << typed << QString();
        QTest::newRow("kept open") << find << true << typed << QString();
        QTest::newRow("no URL") << u"URL=|V0=name"_s << false << QString()
                                << u"No URL has been specified for this service!"_s;
    }
    void go()
    {
        QFETCH(QString, keys);
        QFETCH(bool, keepOpen);
        QFETCH(QString, opened);
        QFETCH(QString, message);
        m->putOnButton(3, u"Request"_s, u"Base=2|"_s + test::kRows + u"|"_s + keys);
        MainWindow& w = m->start();
        m->press(3);
        m->type(3, u"Québec"_s);
        m->type(5, u"G1R 4P5"_s);
        if (keepOpen)
            QTest::mouseClick(m->widget<QCheckBox>(u"chkClose"_s), Qt::LeftButton);
        QSignalSpy unloaded(&w, &MainWindow::unloaded);
        QTest::mouseClick(m->widget<QPushButton>(u"cmdGO"_s), Qt::LeftButton);

        QStringList targets;
        for (const RecordingLauncher::Opened& o : m->launcher->opened())
            targets << o.target;
        QCOMPARE(targets, opened.isEmpty() ? QStringList() : QStringList{opened});
        QCOMPARE(m->prompter->texts(), message.isEmpty() ? QStringList() : QStringList{message});
        const bool closes = !opened.isEmpty() && !keepOpen;
        QCOMPARE(w.isVisible(), !closes);
        QCOMPARE(unloaded.count(), closes ? 1 : 0);
    }

    void colours_data()
    {
        QTest::addColumn<QString>("stored"); // "ColorStandard"; null: none stored
        QTest::addColumn<bool>("standard");
        QTest::newRow("none stored: 1") << QString() << true;
        QTest::newRow("0") << u"0"_s << false;
        QTest::newRow("text") << u"abc"_s << false;
    }
    void colours()
    {
        QFETCH(QString, stored);
        QFETCH(bool, standard);
        if (!stored.isNull())
            SaveSetting(u"ColorStandard"_s, stored);
        m->start();
        const QColor back = standard ? QColor(Qt::white) : QColor(Qt::black);
        const QColor fore = standard ? QApplication::palette().color(QPalette::ButtonText) : QColor(0, 0xFF, 0);
        QCOMPARE(m->box(0)->palette().color(QPalette::Base), back);
        QCOMPARE(m->box(0)->palette().color(QPalette::Text), fore);
        QCOMPARE(m->widget(u"lblContact"_s)->palette().color(QPalette::WindowText), fore);

        // Only a Tag that begins with "1" takes the scheme; other controls keep the desktop's colours.
        auto grab = [&](int i) { return m->widget(u"cmdGrab(%1)"_s.arg(i)); };
        grab(1)->setProperty("Tag", u"12"_s);
        grab(2)->setProperty("Tag", u"21"_s);
        m->window().Refresh_Colors();
        const QPalette desktop = QApplication::palette(grab(0));
        for (int i : {0, 2}) {
            QCOMPARE(grab(i)->palette().color(QPalette::Button), desktop.color(QPalette::Button));
            QCOMPARE(grab(i)->palette().color(QPalette::ButtonText), desktop.color(QPalette::ButtonText));
        }
        QCOMPARE(grab(1)->palette().color(QPalette::Button), back);
        QCOMPARE(grab(1)->palette().color(QPalette::ButtonText), fore);
    }
};

QTEST_MAIN(TestServicesPanel)
#include "tst_servicespanel.moc"
