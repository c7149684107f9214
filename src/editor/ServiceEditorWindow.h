#pragma once

#include "act/ActSession.h"
#include "act/ContactForm.h"
#include "act/FieldListCache.h"
#include "editor/RequestPreview.h"
#include "services/ServiceDefinition.h"

#include <QDialog>
#include <array>
#include <memory>

class QCheckBox;
class QComboBox;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTimer;

namespace corvalent {

// The service editor: frmNew creates a service, frmEdit changes an installed one. Both show the service's name,
// address and type and, for each of the ten rows, the contact field sent under which variable name; both save
// the service file and close. The field lists come from the open database through `session`; without one the
// rows offer the program's own fields, and a line in the window says why.
class ServiceEditorWindow : public QDialog {
    Q_OBJECT
public:
    enum class Mode { New, Edit };

    // `session` may be null (no contact manager); `contact` gives the boxes the preview line builds from.
    ServiceEditorWindow(Mode mode, ActSession* session, const ContactForm* contact, QWidget* parent = nullptr);
    ~ServiceEditorWindow() override;

    Mode mode() const { return m_mode; }

    // Window state, shared with the country dialog: the service file being edited (edit mode) and the country
    // settings the dialog chose.
    QString sFileName;
    QString sCountryFile;
    QString sDefaultCountry;
    // Set before Form_Load to have the country dialog open a second after the window appears (edit mode).
    bool bOpenCountry = false;

    void Form_Load();
    // Chooses an installed service by its display name, as picking it from cboPresets does (edit mode).
    void choosePreset(const QString& displayName);

    void cboPresets_Click();
    void optType_Click(int Index);
    void cboField_Click(int Index);
    void txtVar_Change(int Index);
    void cmdOK_Click();
    void cmdCancel_Click();
    void cmdCountry_Click();
    void tmrCountry_Timer();

    // The index of the first type option that is set; 0 when none is.
    int chosenType() const;
    // The service file written by the last save, and the file it was loaded from ("" in new mode).
    QString savedFile() const { return m_savedFile; }
    QString loadedFile() const { return m_loadedFile; }

signals:
    // A save has written `file`; `previousFile` is the file the service was loaded from ("" for a new service).
    void serviceSaved(const QString& file, const QString& previousFile);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    static constexpr int kFirstCustomRow = 7;

    QString formName() const;
    void buildWindow();
    QWidget* buildRows();
    void placeRows();
    void fillRows();
    void showAddressMarkers(bool shown);
    ServiceDefinition editedService() const;
    void refreshPreview();
    void openFieldList();

    Mode m_mode;
    ActSession* m_session;
    const ContactForm* m_contact;
    std::unique_ptr<FieldListCache> m_fields; // null when no database can be asked
    RequestPreview m_preview;
    QString m_savedFile;
    QString m_loadedFile;
    bool m_loading = false; // the program itself is setting the controls: no preview per change
    int m_labelLeft = 0;

    QComboBox* m_presets = nullptr;
    QLineEdit* m_name = nullptr;
    QLineEdit* m_url = nullptr;
    QLabel* m_urlHint = nullptr;
    QCheckBox* m_encoding = nullptr;
    QString m_loadedEncoding; // the Encoding key of the service being edited, as the file has it
    std::array<QRadioButton*, 3> m_types{};
    QGroupBox* m_rowsFrame = nullptr;
    QLabel* m_headingField = nullptr;
    QLabel* m_headingVariable = nullptr;
    QLabel* m_headingPhone = nullptr;
    std::array<QComboBox*, kFieldRows> m_fieldBoxes{};
    std::array<QLineEdit*, kFieldRows> m_variables{};
    std::array<QLabel*, kFieldRows> m_points{};
    std::array<QLabel*, kFieldRows> m_rowHints{};
    std::array<QLabel*, 7> m_rowLabels{};
    std::array<QLineEdit*, kCustomRows> m_customLabels{};
    std::array<QLineEdit*, kCustomRows> m_phoneFormats{};
    std::array<QLabel*, 6> m_markers{};
    std::array<QFrame*, 3> m_lines{};
    QLabel* m_fieldsNote = nullptr;
    QLineEdit* m_previewLine = nullptr;
    QTimer* m_countryTimer = nullptr;
};

} // namespace corvalent
