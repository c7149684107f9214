// The services panel of the main window and what hangs on the chosen service: the captions and layout, the boxes
// a press captures, the address and phone choices, and the colour scheme.

#include "WindowFixture.h"

#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QListWidget>
#include <QRadioButton>
#include <QToolButton>

using namespace corvalent;
using namespace Qt::StringLiterals;

class TestServicesPanel : public QObject {
    Q_OBJECT

    std::unique_ptr<test::WindowFixture> m;

    QRadioButton* option(int i) { return m->widget<QRadioButton>(u"optOption(%1)"_s.arg(i)); }

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
        QTest::newRow("address (Base 0)") << 0 << u"OpenStreetMap address"_s
                                          << QStringList{u"0=typed"_s, u"2=1500 Rue Peel"_s, u"7="_s}
                                          << QStringList{u"Custom1"_s, u"Custom2"_s, u"Custom3"_s} << true << false;
        QTest::newRow("phone (Base 1), longer captions")
            << 2 << u"Area code lookup"_s << QStringList{u"0=typed"_s, u"2=1500 Rue Peel"_s, u"7=514"_s, u"8=555"_s}
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
        m->putOnButton(3, u"Own rows"_s, u"Base=2|F0=26|F1=25|F2=65|F3=67|F7=80|L7=User 1|L9="_s);
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

    // A button whose service is gone takes no press: the service and the stored button stay.
    void buttonWithoutService()
    {
        WriteKeyValue(u"Buttons"_s, u"4"_s, u"Not there"_s, SettingsFilePath());
        MainWindow& w = m->start();
        m->press(3);
        QVERIFY(!m->serviceButton(3)->isChecked());
        QVERIFY(m->serviceButton(0)->isChecked());
        QCOMPARE(w.currentServiceFile(), m->serviceFile(test::kShippedButtons[0]));
        QCOMPARE(test::stored(u"Pressed"_s), u"<none>"_s);
    }

    // The arrow beside a button opens the list of services on the current one. A click on a service puts it on the
    // button, cut to fit with the whole name as a tooltip and stored with ~ for its dots; a list left for another
    // control, even one that takes no focus, goes away and puts nothing on the button.
    void chooseFromList_data()
    {
        QTest::addColumn<QString>("name");     // of the service clicked; "": none, a caption is clicked instead
        QTest::addColumn<QString>("fileName"); // what Buttons then holds
        QTest::addColumn<QString>("caption");
        QTest::newRow("long name with dots") << u"Regional.business registry search"_s
                                             << u"Regional~business registry search"_s << u"Regional.business regi"_s;
        QTest::newRow("left for a caption") << QString() << test::kShippedButtons[1] << test::kShippedButtons[1];
    }
    void chooseFromList()
    {
        QFETCH(QString, name);
        QFETCH(QString, fileName);
        QFETCH(QString, caption);
        if (!name.isEmpty())
            test::writeService(m->host.home, u"Name="_s + name + u"|URL=h/s?|Base=2|F0=26"_s, fileName);
        MainWindow& w = m->start();
        w.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        auto list = m->widget<QListWidget>(u"lstServices(1)"_s);
        auto arrow = m->widget<QToolButton>(u"chkdropdown(1)"_s);
        QVERIFY(!list->isVisible());
        QTest::mouseClick(arrow, Qt::LeftButton);
        QTRY_VERIFY(list->hasFocus());
        QVERIFY(arrow->isChecked());
        QCOMPARE(list->count(), name.isEmpty() ? 6 : 7); // the six shipped services, and the test's own
        QCOMPARE(list->currentItem()->text(), test::kShippedButtons[0]);
        if (name.isEmpty()) {
            QTest::mouseClick(m->widget(u"lblZip"_s), Qt::LeftButton);
        } else {
            const QList<QListWidgetItem*> found = list->findItems(name, Qt::MatchExactly);
            QCOMPARE(found.size(), 1);
            list->scrollToItem(found[0]);
            QTRY_VERIFY(!list->visualItemRect(found[0]).isEmpty());
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(found[0]).center());
        }
        QTRY_VERIFY(!list->isVisible());
        QVERIFY(!arrow->isChecked());
        QCOMPARE(GetKeyValue(u"Buttons"_s, u"2"_s, {}, {}, {}, SettingsFilePath()), fileName);
        QCOMPARE(m->serviceButton(1)->text(), caption);
        QCOMPARE(m->serviceButton(1)->isChecked(), !name.isEmpty());
        QCOMPARE(m->serviceButton(0)->isChecked(), name.isEmpty());
        if (name.isEmpty())
            return;
        QVERIFY(m->serviceButton(1)->toolTip().startsWith(name + u'\n'));
        QCOMPARE(w.currentServiceFile(), m->serviceFile(fileName));
    }

    // With Custom restored and no phone stored, the phone rows read the phone the list then shows (the home phone),
    // not the mobile phone they read while there is no list.
    void startupCustomReadsTheListedPhone()
    {
        SaveSetting(u"Option"_s, u"2"_s);
        SaveSetting(u"Pressed"_s, u"2"_s); // Area code lookup: the area code of the phone listed in row 7
        m->start();
        QCOMPARE(m->widget<QComboBox>(u"cboPhone"_s)->currentData().toInt(), 37);
        QCOMPARE(m->box(7)->text(), u"450"_s);
    }

    // The phone list shows the phone the phone row reads. Choosing Home shows the home address at once, and a phone
    // picked in the list shows in the phone row and counts as choosing Custom; what was typed in the other rows
    // stays. Each service comes back with the address option last chosen for it.
    void choices()
    {
        m->putOnButton(0, u"Steered"_s, QString(test::kRows).replace(u"F7=0"_s, u"F7=888"_s));
        m->start();
        auto phones = m->widget<QComboBox>(u"cboPhone"_s);
        QCOMPARE(phones->currentData().toInt(), 35);
        QCOMPARE(m->box(7)->text(), u"(514) 555-0199"_s);
        m->type(0, u"typed"_s);
        QTest::mouseClick(option(1), Qt::LeftButton);
        QCOMPARE(m->boxes().mid(0, 8), QStringList({u"typed"_s, u"Acme Ltée"_s, u"12B Main St"_s, u"Laval"_s, u"QC"_s,
                                                    u"H7A 1A1"_s, u"Home Canada"_s, u"(450) 555-0111"_s}));
        const int fax = phones->findData(38);
        phones->setCurrentIndex(fax);
        emit phones->activated(fax);
        QVERIFY(option(2)->isChecked());
        QCOMPARE(test::stored(u"Steered_option"_s), u"2"_s);
        QCOMPARE(m->box(7)->text(), u"(514) 555-0100"_s);
        QCOMPARE(m->box(0)->text(), u"typed"_s);

        m->press(1);
        QTest::mouseClick(option(1), Qt::LeftButton);
        QCOMPARE(test::stored(u"OpenCorporates_option"_s), u"1"_s);
        m->press(0);
        QVERIFY(option(2)->isChecked());
        m->press(1);
        QVERIFY(option(1)->isChecked());
    }

    void colours_data()
    {
        QTest::addColumn<QString>("stored"); // "ColorStandard"; null: none stored
        QTest::addColumn<bool>("standard");
        QTest::newRow("none stored: 1") << QString() << true;
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
