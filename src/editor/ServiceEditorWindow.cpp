#include "editor/ServiceEditorWindow.h"

#include "common/ControlName.h"
#include "common/Error.h"
#include "common/ErrorTrap.h"
#include "common/ProgramFolder.h"
#include "common/Prompter.h"
#include "common/VbRuntime.h"
#include "editor/CountryDialog.h"
#include "editor/DataValidation.h"
#include "editor/FieldLists.h"
#include "prefs/SettingsFile.h"
#include "services/ServiceCatalogue.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScopedValueRollback>
#include <QScrollArea>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>

namespace corvalent {

namespace {

// Positions and widths the rows have always had, given in twips, 15 to a pixel.
constexpr int kTwipsPerPixel = 15;
constexpr int kAddressLabelLeft = 435 / kTwipsPerPixel; // the address markers stand left of the labels
constexpr int kPlainLabelLeft = 255 / kTwipsPerPixel;
constexpr int kPhoneFieldWidth = 1980 / kTwipsPerPixel; // leaves room for the phone-format box
constexpr int kFieldWidth = 2760 / kTwipsPerPixel;

constexpr int kGap = 6;
constexpr int kVariableWidth = 130;
constexpr int kPointSize = 16;
constexpr int kHintWidth = 220;
constexpr int kCountryDelayMs = 1000;

const QString kPhoneFormatKeys = QStringLiteral("01234567890,");

const std::array<const char*, 7> kRowCaptions{"Contact:", "Company:", "Address:", "City:", "State:", "Zip:",
                                              "Country:"};
const std::array<const char*, 3> kTypeCaptions{"Address-based", "Phone-based", "Other"};

QString customCaption(int customIndex)
{
    return QStringLiteral("Custom%1").arg(customIndex + 1);
}

} // namespace

ServiceEditorWindow::ServiceEditorWindow(Mode mode, ActSession* session, const ContactForm* contact,
                                         QWidget* parent)
    : QDialog(parent), m_mode(mode), m_session(session), m_contact(contact)
{
    setObjectName(formName());
    setWindowTitle(mode == Mode::New ? QStringLiteral("New Service") : QStringLiteral("Edit a service"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::ApplicationModal);
    buildWindow();
    if (m_contact)
        connect(m_contact, &ContactForm::textChanged, this, &ServiceEditorWindow::refreshPreview);
}

ServiceEditorWindow::~ServiceEditorWindow() = default;

QString ServiceEditorWindow::formName() const
{
    return m_mode == Mode::New ? QStringLiteral("frmNew") : QStringLiteral("frmEdit");
}

void ServiceEditorWindow::buildWindow()
{
    auto content = new QWidget;
    auto column = new QVBoxLayout(content);

    auto form = new QGridLayout;
    int line = 0;
    auto addLine = [&](const char* name, const QString& caption, QWidget* field) {
        auto label = new QLabel(caption, content);
        label->setObjectName(QLatin1String(name));
        label->setBuddy(field);
        form->addWidget(label, line, 0);
        form->addWidget(field, line, 1);
        ++line;
    };
    if (m_mode == Mode::Edit) {
        m_presets = new QComboBox(content);
        m_presets->setObjectName(QStringLiteral("cboPresets"));
        m_presets->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        m_presets->setMinimumContentsLength(24);
        connect(m_presets, &QComboBox::currentIndexChanged, this, [this] { cboPresets_Click(); });
        addLine("lblPresets", QStringLiteral("Choose the  preset to edit:"), m_presets);
    }
    m_name = new QLineEdit(content);
    m_name->setObjectName(QStringLiteral("txtName"));
    addLine("lblName", QStringLiteral("Service Name:"), m_name);
    m_url = new QLineEdit(content);
    m_url->setObjectName(QStringLiteral("txtURL"));
    m_url->setPlaceholderText(tr("example.org/search?"));
    connect(m_url, &QLineEdit::textChanged, this, &ServiceEditorWindow::refreshPreview);
    addLine("lblURL", QStringLiteral("Service URL + Fixed variables:"), m_url);
    m_urlHint = new QLabel(content);
    m_urlHint->setObjectName(QStringLiteral("lblUrlHint"));
    m_urlHint->setWordWrap(true);
    form->addWidget(m_urlHint, line++, 1);
    m_encoding = new QCheckBox(tr("Send values as UTF-8 (percent-encoded)"), content);
    m_encoding->setObjectName(QStringLiteral("chkEncoding"));
    m_encoding->setToolTip(tr("Off, values go unescaped with accents folded, as older services expect"));
    connect(m_encoding, &QCheckBox::toggled, this, &ServiceEditorWindow::refreshPreview);
    form->addWidget(m_encoding, line++, 1);
    column->addLayout(form);

    auto typeFrame = new QGroupBox(QStringLiteral("Type of Service:"), content);
    typeFrame->setObjectName(QStringLiteral("fraTypeofService"));
    auto typeRow = new QHBoxLayout(typeFrame);
    // Options that start with none of them set, as a new service has no type until one is clicked.
    auto types = new QButtonGroup(this);
    for (int i = 0; i < 3; ++i) {
        auto option = new QRadioButton(QLatin1String(kTypeCaptions[size_t(i)]), typeFrame);
        option->setObjectName(ControlName("optType", i));
        types->addButton(option, i);
        typeRow->addWidget(option);
        m_types[size_t(i)] = option;
    }
    typeRow->addStretch();
    connect(types, &QButtonGroup::idClicked, this, &ServiceEditorWindow::optType_Click);
    column->addWidget(typeFrame);

    column->addWidget(buildRows());

    m_fieldsNote = new QLabel(content);
    m_fieldsNote->setObjectName(QStringLiteral("lblFieldsNote"));
    m_fieldsNote->setWordWrap(true);
    m_fieldsNote->hide();
    column->addWidget(m_fieldsNote);
    // An address has no place to wrap: it scrolls in its box, where it can be read whole and copied.
    m_previewLine = new QLineEdit(content);
    m_previewLine->setObjectName(QStringLiteral("txtPreview"));
    m_previewLine->setReadOnly(true);
    m_previewLine->setFrame(false);
    m_previewLine->setAccessibleName(tr("What GO would send"));
    column->addWidget(m_previewLine);
    column->addStretch();

    // The rows scroll when the screen is too small for them (large scaling on a small screen); the buttons never
    // leave the window.
    auto scroll = new QScrollArea;
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);

    auto country = new QPushButton(QStringLiteral("Countries"), this);
    country->setObjectName(QStringLiteral("cmdCountry"));
    country->setAutoDefault(false);
    connect(country, &QPushButton::clicked, this, &ServiceEditorWindow::cmdCountry_Click);
    auto ok = new QPushButton(tr("&Save"), this);
    ok->setObjectName(QStringLiteral("cmdOK"));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &ServiceEditorWindow::cmdOK_Click);
    auto cancel = new QPushButton(QStringLiteral("&Cancel"), this);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    cancel->setAutoDefault(false);
    connect(cancel, &QPushButton::clicked, this, &ServiceEditorWindow::cmdCancel_Click);
    auto buttons = new QHBoxLayout;
    buttons->addWidget(country);
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);

    auto outer = new QVBoxLayout(this);
    outer->addWidget(scroll);
    outer->addLayout(buttons);

    m_countryTimer = new QTimer(this);
    m_countryTimer->setObjectName(QStringLiteral("tmrCountry"));
    m_countryTimer->setSingleShot(true);
    connect(m_countryTimer, &QTimer::timeout, this, &ServiceEditorWindow::tmrCountry_Timer);

    // As large as the rows need, but never larger than the screen.
    column->activate();
    const QSize wanted = content->sizeHint() + QSize(32, 32 + buttons->sizeHint().height());
    const QRect screen = (parentWidget() ? parentWidget()->screen() : QApplication::primaryScreen())->availableGeometry();
    resize(qMin(wanted.width(), screen.width() - 40), qMin(wanted.height(), screen.height() - 60));
}

QWidget* ServiceEditorWindow::buildRows()
{
    m_rowsFrame = new QGroupBox(QStringLiteral("Field Settings:"));
    m_rowsFrame->setObjectName(QStringLiteral("fraFields"));
    QWidget* frame = m_rowsFrame;
    auto heading = [frame](const char* name, const QString& caption) {
        auto label = new QLabel(caption, frame);
        label->setObjectName(QLatin1String(name));
        return label;
    };
    m_headingField = heading("lblDb", QStringLiteral("Database Field"));
    m_headingVariable = heading("lblVar", QStringLiteral("Variable Name"));
    m_headingPhone = heading("lblPhoneFormat", QStringLiteral("Phone Format"));
    m_headingPhone->hide();

    const QPixmap point = style()->standardIcon(QStyle::SP_ArrowRight).pixmap(kPointSize, kPointSize);
    for (int i = 0; i < 6; ++i) {
        auto marker = new QLabel(QStringLiteral("\u25B8"), frame);
        marker->setObjectName(ControlName("lbl1", i));
        m_markers[size_t(i)] = marker;
    }
    for (int i = 0; i < 3; ++i) {
        auto connector = new QFrame(frame);
        connector->setObjectName(ControlName("lin2", i));
        connector->setFrameShape(QFrame::VLine);
        m_lines[size_t(i)] = connector;
    }
    // Created in the order Tab walks them: a row's caption, field, phone format, variable name, then the next row.
    for (int row = 0; row < kFieldRows; ++row) {
        if (row < kFirstCustomRow) {
            auto caption = new QLabel(QLatin1String(kRowCaptions[size_t(row)]), frame);
            caption->setObjectName(ControlName("lblField", row));
            m_rowLabels[size_t(row)] = caption;
        } else {
            auto custom = new QLineEdit(customCaption(row - kFirstCustomRow), frame);
            custom->setObjectName(ControlName("txtCustom", row));
            custom->setToolTip(tr("The caption of this row in the main window"));
            m_customLabels[size_t(row - kFirstCustomRow)] = custom;
        }
        auto field = new QComboBox(frame);
        field->setObjectName(ControlName("cboField", row));
        connect(field, &QComboBox::currentIndexChanged, this, [this, row] {
            cboField_Click(row);
            refreshPreview();
        });
        m_fieldBoxes[size_t(row)] = field;
        if (row >= kFirstCustomRow) {
            auto format = new QLineEdit(frame);
            format->setObjectName(ControlName("txtPhoneFormat", row));
            format->setToolTip(tr("Which digits of the phone number are sent, by position: 1,2,3 sends the first "
                                  "three; empty sends them all"));
            format->installEventFilter(this);
            format->hide();
            connect(format, &QLineEdit::textChanged, this, &ServiceEditorWindow::refreshPreview);
            m_phoneFormats[size_t(row - kFirstCustomRow)] = format;
        }
        auto variable = new QLineEdit(frame);
        variable->setObjectName(ControlName("txtVar", row));
        variable->setAccessibleName(tr("Variable name of row %1").arg(row + 1));
        connect(variable, &QLineEdit::textChanged, this, [this, row] {
            txtVar_Change(row);
            refreshPreview();
        });
        m_variables[size_t(row)] = variable;
        auto marker = new QLabel(frame);
        marker->setObjectName(ControlName("imgPoint", row));
        marker->setPixmap(point);
        marker->hide();
        m_points[size_t(row)] = marker;
        auto hint = new QLabel(frame);
        hint->setObjectName(ControlName("lblRowHint", row));
        m_rowHints[size_t(row)] = hint;
    }
    m_labelLeft = kAddressLabelLeft;
    placeRows();
    return m_rowsFrame;
}

void ServiceEditorWindow::placeRows()
{
    const QFontMetrics metrics = m_rowsFrame->fontMetrics();
    int labelWidth = 72;
    for (const char* caption : kRowCaptions)
        labelWidth = qMax(labelWidth, metrics.horizontalAdvance(QLatin1String(caption)) + 8);
    const int fieldLeft = kAddressLabelLeft + labelWidth + kGap;
    const int phoneLeft = fieldLeft + kPhoneFieldWidth + 4;
    const int variableLeft = fieldLeft + kFieldWidth + 2 * kGap;
    const int pointLeft = variableLeft + kVariableWidth + 4;
    const int hintLeft = pointLeft + kPointSize + kGap;
    const int rowHeight = qMax(m_fieldBoxes[0]->sizeHint().height(), m_variables[0]->sizeHint().height()) + 4;
    const int headingTop = metrics.height() + 8;
    const int rowsTop = headingTop + metrics.height() + 4;
    auto top = [&](int row) { return rowsTop + row * rowHeight; };
    auto middle = [&](int row) { return top(row) + rowHeight / 2; };

    m_headingField->move(fieldLeft, headingTop);
    m_headingPhone->move(phoneLeft, headingTop);
    m_headingVariable->move(variableLeft, headingTop);
    for (int i = 0; i < 6; ++i)
        m_markers[size_t(i)]->setGeometry(2, top(i), kAddressLabelLeft - 4, rowHeight - 4);
    // The connectors join the address rows the "->" fields are taken apart from: address, city, state and zip.
    for (int i = 0; i < 3; ++i)
        m_lines[size_t(i)]->setGeometry(kAddressLabelLeft / 2 + 4, middle(2 + i), 3, rowHeight);

    for (int row = 0; row < kFieldRows; ++row) {
        const int y = top(row);
        const int height = rowHeight - 4;
        if (row < kFirstCustomRow) {
            // The address rows move right of their markers; the country row never had one.
            const int left = row < 6 ? m_labelLeft : kPlainLabelLeft;
            m_rowLabels[size_t(row)]->setGeometry(left, y, labelWidth, height);
        } else {
            m_customLabels[size_t(row - kFirstCustomRow)]->setGeometry(kPlainLabelLeft, y,
                                                                      fieldLeft - kPlainLabelLeft - kGap, height);
            m_phoneFormats[size_t(row - kFirstCustomRow)]->setGeometry(phoneLeft, y,
                                                                      fieldLeft + kFieldWidth - phoneLeft, height);
        }
        QComboBox* field = m_fieldBoxes[size_t(row)];
        field->setGeometry(fieldLeft, y, field->width() == kPhoneFieldWidth ? kPhoneFieldWidth : kFieldWidth,
                           height);
        m_variables[size_t(row)]->setGeometry(variableLeft, y, kVariableWidth, height);
        m_points[size_t(row)]->setGeometry(pointLeft, y + (height - kPointSize) / 2, kPointSize, kPointSize);
        m_rowHints[size_t(row)]->setGeometry(hintLeft, y, kHintWidth, height);
    }
    m_rowsFrame->setMinimumSize(hintLeft + kHintWidth + kGap, top(kFieldRows) + kGap);
}

void ServiceEditorWindow::showAddressMarkers(bool shown)
{
    for (QLabel* marker : m_markers)
        marker->setVisible(shown);
    for (QFrame* connector : m_lines)
        connector->setVisible(shown);
}

void ServiceEditorWindow::Form_Load()
{
    trappedSub(formName() + QStringLiteral(": Sub Form_Load"), [&] {
        QScopedValueRollback<bool> loading(m_loading, true);
        openFieldList();
        if (m_mode == Mode::New) {
            // No type is set yet, which counts as an address-based service.
            showAddressMarkers(true);
            fillRows();
            return;
        }
        fillRows();
        {
            const QSignalBlocker quiet(m_presets);
            QStringList names = ServiceListEntries(PresetsDir(), false);
            names.sort(Qt::CaseInsensitive);
            m_presets->addItems(names);
            m_presets->setCurrentIndex(-1);
        }
        if (bOpenCountry) {
            bOpenCountry = false;
            m_countryTimer->start(kCountryDelayMs);
        }
    });
    refreshPreview();
}

void ServiceEditorWindow::openFieldList()
{
    m_fields.reset();
    QString why;
    if (!m_session || !m_session->isOpen()) {
        why = tr("The contact manager is not running, so only the program's own fields are listed. Start it, "
                 "open a database and open this window again to choose its fields.");
    } else {
        auto fields = std::make_unique<FieldListCache>(*m_session);
        try {
            fields->count();
            m_fields = std::move(fields);
        } catch (const Error& e) {
            why = tr("The contact manager did not list its fields (%1), so only the program's own fields are "
                     "listed. Open a database in it and open this window again.")
                      .arg(e.description());
        }
    }
    if (!why.isEmpty())
        why += QLatin1Char(' ') + tr("A row whose field is not listed keeps the field its file names.");
    m_fieldsNote->setText(why);
    m_fieldsNote->setVisible(!why.isEmpty());
}

int ServiceEditorWindow::chosenType() const
{
    for (int i = 0; i < 3; ++i) {
        if (m_types[size_t(i)]->isChecked())
            return i;
    }
    return 0;
}

void ServiceEditorWindow::fillRows()
{
    const int type = chosenType();
    const bool fromFile = m_mode == Mode::Edit && !sFileName.isEmpty();
    for (int row = 0; row < kFieldRows; ++row) {
        const QString defaultField = QLatin1String(ActSession::kDefaultFieldIds[size_t(row)]);
        QString select = defaultField;
        if (m_mode == Mode::Edit)
            select = fromFile ? ServiceSetting(sFileName, QStringLiteral("F%1").arg(row), defaultField) : defaultField;
        FieldChoices choices;
        Populate_cboFields(choices, m_fields.get(), kServiceFieldTypes, 0, select, qint16(type));

        QComboBox* field = m_fieldBoxes[size_t(row)];
        {
            const QSignalBlocker quiet(field);
            field->clear();
            for (const FieldChoices::Entry& entry : choices.entries)
                field->addItem(entry.text, entry.itemData);
            field->setCurrentIndex(choices.current);
        }
        if (m_mode == Mode::Edit) {
            auto stored = [&](const QString& key, const QString& fallback = QString()) {
                return fromFile ? ServiceSetting(sFileName, key, fallback) : fallback;
            };
            m_variables[size_t(row)]->setText(stored(QStringLiteral("V%1").arg(row)));
            if (row >= kFirstCustomRow) {
                const int custom = row - kFirstCustomRow;
                m_customLabels[size_t(custom)]->setText(stored(QStringLiteral("L%1").arg(row), customCaption(custom)));
                m_phoneFormats[size_t(custom)]->setText(stored(QStringLiteral("PhFormat%1").arg(row)));
            }
        }
        cboField_Click(row);
    }
}

void ServiceEditorWindow::optType_Click(int Index)
{
    trappedSub(formName() + QStringLiteral(": Sub optType_Click"), [&] {
        QScopedValueRollback<bool> loading(m_loading, true);
        const bool address = Index == ServiceBase::Address;
        showAddressMarkers(address);
        m_labelLeft = address ? kAddressLabelLeft : kPlainLabelLeft;
        placeRows();
        fillRows();
    });
    refreshPreview();
}

void ServiceEditorWindow::cboField_Click(int Index)
{
    if (Index < kFirstCustomRow)
        return;
    trappedSub(formName() + QStringLiteral(": Sub cboField_Click"), [&] {
        QComboBox* field = m_fieldBoxes[size_t(Index)];
        QLineEdit* format = m_phoneFormats[size_t(Index - kFirstCustomRow)];
        const bool phone = field->currentIndex() >= 0 && field->currentData().toInt() == FieldCode::PhoneNumbers;
        field->resize(phone ? kPhoneFieldWidth : kFieldWidth, field->height());
        format->setVisible(phone);
        m_headingPhone->setVisible(phone);
    });
}

void ServiceEditorWindow::txtVar_Change(int Index)
{
    m_points[size_t(Index)]->setVisible(!m_variables[size_t(Index)]->text().isEmpty());
}

bool ServiceEditorWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        for (QLineEdit* format : m_phoneFormats) {
            if (watched != format)
                continue;
            // Only typed characters are checked: moving, deleting and pasting keep working.
            const auto key = static_cast<QKeyEvent*>(event);
            int keyAscii = 0;
            if (key->key() == Qt::Key_Backspace)
                keyAscii = kBackspaceKey;
            else if (!key->text().isEmpty() && key->text().at(0).isPrint()
                     && !(key->modifiers() & (Qt::ControlModifier | Qt::AltModifier)))
                keyAscii = key->text().at(0).unicode();
            if (keyAscii != 0 && ValidateText(keyAscii, kPhoneFormatKeys, true) == 0)
                return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void ServiceEditorWindow::choosePreset(const QString& displayName)
{
    if (m_presets)
        m_presets->setCurrentIndex(m_presets->findText(displayName, Qt::MatchFixedString | Qt::MatchCaseSensitive));
}

void ServiceEditorWindow::cboPresets_Click()
{
    trappedSub(QStringLiteral("frmEdit: Sub cboPresets_Click"), [&] {
        const QString chosen = m_presets->currentText();
        if (m_presets->currentIndex() < 0)
            return;
        QScopedValueRollback<bool> loading(m_loading, true);
        sFileName = ServiceFilePath(PresetsDir(), chosen);
        m_loadedFile = sFileName;
        m_name->setText(DisplayName(ServiceSetting(sFileName, QStringLiteral("Name"))));
        m_url->setText(ServiceSetting(sFileName, QStringLiteral("URL")));
        // Kept as the file has them, so that saving without opening the country dialog changes neither.
        sCountryFile = ServiceSetting(sFileName, QStringLiteral("CountryFile"));
        sDefaultCountry = ServiceSetting(sFileName, QStringLiteral("DefaultCountry"));
        m_loadedEncoding = ServiceSetting(sFileName, kEncodingKey);
        m_encoding->setChecked(IsUtf8Encoding(m_loadedEncoding));
        const int base = CInt(ServiceSetting(sFileName, QStringLiteral("Base"), QStringLiteral("0")));
        if (base < ServiceBase::Address || base > ServiceBase::Other)
            throw Error(340, QStringLiteral("Control array element '%1' doesn't exist").arg(base));
        m_types[size_t(base)]->setChecked(true);
        optType_Click(base);
    });
    refreshPreview();
}

ServiceDefinition ServiceEditorWindow::editedService() const
{
    ServiceDefinition s;
    s.name = m_name->text();
    s.url = m_url->text();
    for (int i = 0; i < 3 && s.base == ServiceBase::None; ++i) {
        if (m_types[size_t(i)]->isChecked())
            s.base = i;
    }
    s.countryFile = sCountryFile;
    s.defaultCountry = sDefaultCountry;
    // Unchecked adds no key, so a service saved as it was keeps its file; only a "utf-8" it had is switched off.
    if (m_encoding->isChecked())
        s.encoding = kUtf8Encoding;
    else if (IsUtf8Encoding(m_loadedEncoding))
        s.encoding = QString();
    for (int row = 0; row < kFieldRows; ++row) {
        const QComboBox* field = m_fieldBoxes[size_t(row)];
        if (field->currentIndex() >= 0)
            s.fields[size_t(row)] = field->currentData().toInt();
        s.variables[size_t(row)] = m_variables[size_t(row)]->text();
    }
    // Only the custom rows have a phone-format box; a phone row above them writes no format.
    for (int i = 0; i < kCustomRows; ++i) {
        s.phoneFormats[size_t(kFirstCustomRow + i)] = m_phoneFormats[size_t(i)]->text();
        s.labels[size_t(i)] = m_customLabels[size_t(i)]->text();
    }
    return s;
}

void ServiceEditorWindow::cmdOK_Click()
{
    trappedSub(formName() + QStringLiteral(": Sub cmdOK_Click"), [&] {
        const ServiceDefinition service = editedService();
        QString path;
        if (m_mode == Mode::New) {
            QDir().mkpath(PresetsDir());
            path = ProgramFolder::join(PresetsDir(), StoredName(service.name) + QStringLiteral(".isf"));
            if (!WriteNewService(path, service))
                throw Error(ErrorNumber::PermissionDenied, QStringLiteral("Permission denied: %1").arg(path));
        } else {
            if (sFileName.isEmpty()) {
                Prompter::instance().message(tr("Choose the service to edit first."), Prompter::Exclamation);
                return;
            }
            path = sFileName;
            SaveEditedService(path, service);
            sFileName = path;
        }
        m_savedFile = path;
        emit serviceSaved(m_savedFile, m_loadedFile);
        accept();
    });
}

void ServiceEditorWindow::cmdCancel_Click()
{
    reject();
}

void ServiceEditorWindow::cmdCountry_Click()
{
    trappedSub(formName() + QStringLiteral(": Sub cmdCountry_Click"), [&] {
        auto dialog = new CountryDialog(this);
        dialog->Form_Load();
        dialog->open();
    });
}

void ServiceEditorWindow::tmrCountry_Timer()
{
    m_countryTimer->stop();
    cmdCountry_Click();
}

void ServiceEditorWindow::refreshPreview()
{
    if (m_loading)
        return;
    const ServiceDefinition service = editedService();
    m_previewLine->setText(m_preview.describe(service, m_contact ? m_contact->texts() : FieldTexts{}));
    m_previewLine->setCursorPosition(0);
    m_previewLine->setToolTip(m_previewLine->text());
    const ServiceHints hints = HintsFor(service);
    m_urlHint->setText(hints.url);
    m_urlHint->setVisible(!hints.url.isEmpty());
    for (int row = 0; row < kFieldRows; ++row) {
        QLabel* hint = m_rowHints[size_t(row)];
        hint->setText(hints.rows[size_t(row)]);
        hint->setToolTip(hints.rows[size_t(row)]);
    }
}

} // namespace corvalent
