// The service editor driven as a user drives it, by its control names: the files it saves byte for byte, the
// rows it offers, the country dialog, and what the main window makes of a save.

#include "../app/WindowFixture.h"
#include "support/Controls.h"

#include "editor/CountryDialog.h"
#include "editor/DataValidation.h"
#include "editor/ServiceEditorWindow.h"
#include "request/Go.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QRadioButton>
#include <QRegularExpression>

using namespace corvalent;
using namespace Qt::StringLiterals;

namespace {

using test::control;

QComboBox* fieldBox(QWidget* w, int row) { return control<QComboBox>(w, u"cboField(%1)"_s.arg(row)); }
QLineEdit* edit(QWidget* w, const QString& name) { return control<QLineEdit>(w, name); }

void choose(QComboBox* box, const QString& text)
{
    const int index = box->findText(text);
    QVERIFY2(index >= 0, qPrintable(text));
    box->setCurrentIndex(index);
}

void typeInto(QLineEdit* box, const QString& text)
{
    box->selectAll();
    QTest::keyClick(box, Qt::Key_Delete);
    QTest::keyClicks(box, text);
}

} // namespace

class TestServiceEditor : public QObject {
    Q_OBJECT

    std::unique_ptr<test::WindowFixture> m;
    int m_beeps = 0;

    ServiceEditorWindow* open(ServiceEditorWindow::Mode mode, bool withContactManager = true)
    {
        auto w = new ServiceEditorWindow(mode, withContactManager ? &m->host.session : nullptr, nullptr);
        w->Form_Load();
        w->show();
        return w;
    }
    static void save(const QPointer<ServiceEditorWindow>& w)
    {
        QTest::mouseClick(control<QPushButton>(w, u"cmdOK"_s), Qt::LeftButton);
        QTRY_VERIFY(w.isNull());
    }

private slots:
    void init()
    {
        m = std::make_unique<test::WindowFixture>();
        m_beeps = 0;
        SetValidationBeep([this] { ++m_beeps; });
    }
    void cleanup()
    {
        SetValidationBeep(nullptr);
        m.reset();
    }

    // A new phone service with a phone-format row, saved over an older file of the name without a question.
    void newServiceReplacesWithoutAsking()
    {
        m->host.home.write(u"Presets/Postal codes 2~1.isf"_s, "[Settings]\r\nOld=1\r\n");
        QPointer<ServiceEditorWindow> w = open(ServiceEditorWindow::Mode::New);
        QCOMPARE(w->windowTitle(), u"New Service"_s);
        typeInto(edit(w, u"txtName"_s), u"Postal codes 2.1"_s);
        typeInto(edit(w, u"txtURL"_s), u"example.org/pc?lang=en"_s);
        QVERIFY(control<QLabel>(w, u"lblUrlHint"_s)->isVisible());
        QTest::mouseClick(control<QRadioButton>(w, u"optType(1)"_s), Qt::LeftButton);
        QVERIFY(!control(w, u"lbl1(0)"_s)->isVisible());
        QCOMPARE(control(w, u"lblField(0)"_s)->x(), 17);

        choose(fieldBox(w, 8), u"->Phone Numbers"_s);
        QCOMPARE(fieldBox(w, 8)->width(), 132);
        QLineEdit* format = edit(w, u"txtPhoneFormat(8)"_s);
        QVERIFY(format->isVisible());
        QTest::keyClicks(format, u"1,2x,3"_s);
        QCOMPARE(format->text(), u"1,2,3"_s);
        QCOMPARE(m_beeps, 1);
        QTest::keyClick(format, Qt::Key_Backspace);
        QTest::keyClicks(format, u"4"_s);
        QCOMPARE(format->text(), u"1,2,4"_s);
        // The heading follows the row chosen last, though row 8 keeps its box.
        choose(fieldBox(w, 9), u"User 1"_s);
        QVERIFY(!control(w, u"lblPhoneFormat"_s)->isVisible());
        QVERIFY(format->isVisible());
        QCOMPARE(fieldBox(w, 9)->width(), 184);

        typeInto(edit(w, u"txtVar(0)"_s), u"name"_s);
        typeInto(edit(w, u"txtVar(5)"_s), u"&pcode"_s);
        typeInto(edit(w, u"txtCustom(8)"_s), u"Phone"_s);
        QVERIFY(control(w, u"imgPoint(0)"_s)->isVisible());
        QVERIFY(!control(w, u"imgPoint(1)"_s)->isVisible());
        save(w);
        QVERIFY(m->prompter->prompts().isEmpty());
        QCOMPARE(test::TestHome::read(m->serviceFile(u"Postal codes 2~1"_s)),
                 QString(u"[Settings]|Name=Postal codes 2~1|URL=example.org/pc?lang=en|Base=1|CountryFile=|"
                         "DefaultCountry=|F0=26|F1=25|F2=27|F3=30|F4=31|F5=32|F6=33|F7=0|F8=888|PhFormat8=1,2,4|F9=80|"
                         "V0=name|V1=|V2=|V3=|V4=|V5=&pcode|V6=|V7=|V8=|V9=|L7=Custom1|L8=Phone|L9=Custom3|"_s)
                     .replace(u'|', u"\r\n"_s)
                     .toUtf8());
    }

    // Loading shows the stored rows (dots in the name again) and whether the service sends UTF-8; a type switch
    // throws unsaved row edits away. The save renames by the stored name, or keeps a file that was renamed by hand;
    // it writes "utf-8" when the box is checked, empties only a "utf-8" that was unchecked, and keeps other values.
    void editAndSave_data()
    {
        QTest::addColumn<QString>("stem");
        QTest::addColumn<QString>("storedName");
        QTest::addColumn<QString>("newName");
        QTest::addColumn<QString>("savedStem");
        QTest::addColumn<QString>("encoding"); // the stored value
        QTest::addColumn<bool>("checked");     // as loaded
        QTest::addColumn<bool>("click");
        QTest::addColumn<QString>("saved");    // the key's line after the save
        QTest::newRow("renamed, UTF-8 kept") << u"Maps~1"_s << u"Maps~1"_s << u"Atlas.2"_s << u"Atlas~2"_s
                                             << u"UTF-8"_s << true << false << u"Encoding=utf-8"_s;
        QTest::newRow("file renamed by hand, utf-8 cleared") << u"Hand"_s << u"Other"_s << u"New"_s << u"Hand"_s
                                                             << u"utf-8"_s << true << true << u"Encoding="_s;
        QTest::newRow("other value, left") << u"Maps"_s << u"Maps"_s << u"Maps"_s << u"Maps"_s << u"latin1"_s << false
                                           << false << u"Encoding=latin1"_s;
    }

    void editAndSave()
    {
        QFETCH(QString, stem);
        QFETCH(QString, storedName);
        QFETCH(QString, newName);
        QFETCH(QString, savedStem);
        QFETCH(QString, encoding);
        QFETCH(bool, click);
        test::writeService(m->host.home,
                           u"Name="_s + storedName
                               + u"|URL=x.org/?|Base=1|CountryFile=c.ini|DefaultCountry=CA|Author=me|"
                                 "F0=26|F1=25|F2=0|F3=30|F4=0|F5=0|F6=0|F7=0|F8=888|PhFormat8=4,5|F9=0|V3=city|L8=Tel"_s
                               + u"|Encoding="_s + encoding,
                           stem);
        QPointer<ServiceEditorWindow> w = open(ServiceEditorWindow::Mode::Edit);
        QCOMPARE(w->windowTitle(), u"Edit a service"_s);
        choose(control<QComboBox>(w, u"cboPresets"_s), QString(stem).replace(u'~', u'.'));
        QCOMPARE(edit(w, u"txtName"_s)->text(), storedName.replace(u'~', u'.'));
        QVERIFY(control<QRadioButton>(w, u"optType(1)"_s)->isChecked());
        QCOMPARE(fieldBox(w, 3)->currentText(), u"City"_s);
        QCOMPARE(fieldBox(w, 8)->currentText(), u"->Phone Numbers"_s);
        QVERIFY(edit(w, u"txtPhoneFormat(8)"_s)->isVisible());
        QCOMPARE(edit(w, u"txtPhoneFormat(8)"_s)->text(), u"4,5"_s);
        QCOMPARE(edit(w, u"txtCustom(8)"_s)->text(), u"Tel"_s);
        auto box = control<QCheckBox>(w, u"chkEncoding"_s);
        QTEST(box->isChecked(), "checked");

        typeInto(edit(w, u"txtVar(3)"_s), u"town"_s);
        choose(fieldBox(w, 3), u"Zip"_s);
        QTest::mouseClick(control<QRadioButton>(w, u"optType(2)"_s), Qt::LeftButton);
        QTest::mouseClick(control<QRadioButton>(w, u"optType(1)"_s), Qt::LeftButton);
        QCOMPARE(edit(w, u"txtVar(3)"_s)->text(), u"city"_s);
        QCOMPARE(fieldBox(w, 3)->currentText(), u"City"_s);

        if (click)
            QTest::mouseClick(box, Qt::LeftButton);
        typeInto(edit(w, u"txtName"_s), newName);
        save(w);
        QCOMPARE(QDir(PresetsDir()).entryList({u"*.isf"_s}).filter(savedStem), QStringList{savedStem + u".isf"_s});
        if (savedStem != stem)
            QVERIFY(!QFileInfo::exists(m->serviceFile(stem)));
        const QString saved = m->serviceFile(savedStem);
        QCOMPARE(ServiceSetting(saved, u"Name"_s), newName.replace(u'.', u'~'));
        for (const QString& kept : {u"Author=me"_s, u"CountryFile=c.ini"_s, u"DefaultCountry=CA"_s, u"F8=888"_s,
                                    u"PhFormat8=4,5"_s})
            QCOMPARE(ServiceSetting(saved, kept.section(u'=', 0, 0)), kept.section(u'=', 1));
        const QStringList lines = QString::fromUtf8(test::TestHome::read(saved)).split(u"\r\n"_s);
        QTEST(lines.filter(QRegularExpression(u"^Encoding="_s)).join(u'|'), "saved");
    }

    // The dialog reads the edited service's file and writes it at OK, before and whatever the editor's own save
    // (a cancelled editor writes nothing else); from a new service it starts empty every time and leaves the
    // writing to the save.
    void countryDialog_data()
    {
        QTest::addColumn<bool>("editing");
        QTest::newRow("new service") << false;
        QTest::newRow("installed service") << true;
    }

    void countryDialog()
    {
        QFETCH(bool, editing);
        const QString file = test::writeService(m->host.home, u"Name=Geo|URL=x.org/?|Base=0|CountryFile=old.ini|"
                                                              "DefaultCountry=US"_s,
                                                u"Geo"_s);
        QPointer<ServiceEditorWindow> w = open(editing ? ServiceEditorWindow::Mode::Edit : ServiceEditorWindow::Mode::New);
        if (editing)
            choose(control<QComboBox>(w, u"cboPresets"_s), u"Geo"_s);
        else
            typeInto(edit(w, u"txtName"_s), u"Geo"_s);

        auto openDialog = [&] {
            QTest::mouseClick(control<QPushButton>(w, u"cmdCountry"_s), Qt::LeftButton);
            return QPointer<CountryDialog>(w->findChild<CountryDialog*>(u"frmCountry"_s));
        };
        QPointer<CountryDialog> dialog = openDialog();
        QVERIFY(dialog && dialog->isModal());
        QCOMPARE(dialog->windowTitle(), u"Countries file"_s);
        QCOMPARE(edit(dialog, u"txtFile"_s)->text(), editing ? u"old.ini"_s : QString());
        QCOMPARE(edit(dialog, u"txtDefault"_s)->text(), editing ? u"US"_s : QString());
        m->prompter->scriptFileName(ProgramFolder::join(ProgramFolder::path(), u"sub/Countries-EU.ini"_s));
        QTest::mouseClick(control<QPushButton>(dialog, u"cmdBrowse"_s), Qt::LeftButton);
        QCOMPARE(edit(dialog, u"txtFile"_s)->text(), u"sub/Countries-EU.ini"_s);
        typeInto(edit(dialog, u"txtDefault"_s), u"FR"_s);
        QTest::mouseClick(control<QPushButton>(dialog, u"cmdOK"_s), Qt::LeftButton);
        QTRY_VERIFY(dialog.isNull());
        QCOMPARE(ServiceSetting(file, u"CountryFile"_s), editing ? u"sub/Countries-EU.ini"_s : u"old.ini"_s);

        // Opened again, the new service's dialog shows nothing; cancelled, it keeps what the window holds.
        dialog = openDialog();
        QCOMPARE(edit(dialog, u"txtFile"_s)->text(), editing ? u"sub/Countries-EU.ini"_s : QString());
        typeInto(edit(dialog, u"txtFile"_s), u"ignored.ini"_s);
        QTest::keyClick(dialog, Qt::Key_Escape);
        QTRY_VERIFY(dialog.isNull());

        // Cancelled, the editor writes nothing of its own.
        if (editing) {
            typeInto(edit(w, u"txtName"_s), u"Changed"_s);
            typeInto(edit(w, u"txtVar(0)"_s), u"b"_s);
            QTest::mouseClick(control<QPushButton>(w, u"cmdCancel"_s), Qt::LeftButton);
            QCOMPARE(QDir(PresetsDir()).entryList({u"Changed*"_s}), QStringList());
            QCOMPARE(ServiceSetting(file, u"V0"_s), QString());
            QTRY_VERIFY(w.isNull());
        } else
            save(w);
        QCOMPARE(ServiceSetting(file, u"CountryFile"_s), u"sub/Countries-EU.ini"_s);
        QCOMPARE(ServiceSetting(file, u"DefaultCountry"_s), u"FR"_s);
    }

    // Without a contact manager the rows offer the program's own fields and say why; a stored field the list
    // does not offer stays in the file.
    void withoutContactManager()
    {
        const QString file =
            test::writeService(m->host.home, u"Name=Alone|URL=x.org/?|Base=0|F0=26|F1=778"_s, u"Alone"_s);
        QPointer<ServiceEditorWindow> w = open(ServiceEditorWindow::Mode::Edit, false);
        QVERIFY(control<QLabel>(w, u"lblFieldsNote"_s)->isVisible());
        QVERIFY(control<QLabel>(w, u"lblFieldsNote"_s)->text().contains(u"not running"_s));
        choose(control<QComboBox>(w, u"cboPresets"_s), u"Alone"_s);
        QComboBox* contact = fieldBox(w, 0);
        QCOMPARE(contact->count(), 4);
        QCOMPARE(contact->currentIndex(), -1);
        QCOMPARE(fieldBox(w, 1)->currentText(), u"->Address w/o Street number"_s);
        typeInto(edit(w, u"txtVar(0)"_s), u"who"_s);
        save(w);
        QCOMPARE(ServiceSetting(file, u"F0"_s), u"26"_s);
        QCOMPARE(ServiceSetting(file, u"V0"_s), u"who"_s);
        QVERIFY(m->prompter->prompts().isEmpty());
    }

    // The menus open the editor on the pressed service; a save shows at once, and a renamed service stays on its
    // button. The preview line shows what GO would send for the contact on screen.
    void mainWindowFollowsTheSave()
    {
        MainWindow& main = m->start();
        m->press(0);
        main.findChild<QAction*>(u"mnuPopupSettings"_s)->trigger();
        QPointer<ServiceEditorWindow> w = main.serviceEditor();
        QVERIFY(w && w->isVisible() && w->isModal());
        QCOMPARE(control<QComboBox>(w, u"cboPresets"_s)->currentText(), test::kShippedButtons[0]);
        QVERIFY(control<QLabel>(w, u"lblFieldsNote"_s)->isHidden());
        QVERIFY(edit(w, u"txtPreview"_s)->text().contains(u"Montr%C3%A9al"_s));
        typeInto(edit(w, u"txtVar(3)"_s), u"ville"_s);
        QVERIFY(edit(w, u"txtPreview"_s)->text().contains(u"ville=Montr%C3%A9al"_s));
        QTest::mouseClick(control<QCheckBox>(w, u"chkEncoding"_s), Qt::LeftButton);
        QVERIFY(edit(w, u"txtPreview"_s)->text().contains(u"ville=Montreal"_s));
        typeInto(edit(w, u"txtName"_s), u"OSM.map"_s);
        typeInto(edit(w, u"txtCustom(7)"_s), u"Extra"_s);
        save(w);

        QCOMPARE(main.currentServiceFile(), m->serviceFile(u"OSM~map"_s));
        QCOMPARE(m->serviceButton(0)->text(), u"OSM.map"_s);
        QVERIFY(m->serviceButton(0)->isChecked());
        QCOMPARE(GetKeyValue(u"Buttons"_s, u"1"_s, {}, {}, {}, SettingsFilePath()), u"OSM~map"_s);
        QCOMPARE(main.findChild<QLabel*>(u"lblField(7)"_s)->text(), u"Extra"_s);

        main.findChild<QAction*>(u"mnuSettings"_s)->trigger();
        QCOMPARE(main.serviceEditor()->objectName(), u"frmNew"_s);
    }

    // GO on a service whose country file is missing says so and opens the editor on it, which brings the
    // country dialog about a second later; nothing is sent.
    void goOpensTheCountryDialog()
    {
        MainWindow& main = m->start();
        m->putOnButton(1, u"Lost"_s, u"URL=x.org/?|Base=0|CountryFile=missing.ini|"_s + test::kRows);
        main.servicesPanel().refreshCaptions();
        m->press(1);
        main.cmdGO_Click();
        QCOMPARE(m->prompter->texts(), QStringList{kMissingCountryFileMessage});
        QVERIFY(m->launcher->opened().isEmpty());
        ServiceEditorWindow* w = main.serviceEditor();
        QVERIFY(w);
        QCOMPARE(w->objectName(), u"frmEdit"_s);
        QCOMPARE(control<QComboBox>(w, u"cboPresets"_s)->currentText(), u"Lost"_s);
        QVERIFY(!w->findChild<CountryDialog*>());
        QTRY_VERIFY_WITH_TIMEOUT(w->findChild<CountryDialog*>(), 3000);
        QCOMPARE(edit(w->findChild<CountryDialog*>(), u"txtFile"_s)->text(), u"missing.ini"_s);
    }
};

QTEST_MAIN(TestServiceEditor)
#include "tst_serviceeditor.moc"
