#pragma once

#include <QDialog>
#include <array>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QRadioButton;

namespace corvalent {

// frmPreferences: what the boxes show at start-up, the country of a contact without one, US address
// recognition, the colour scheme, and where the settings file and the services are. OK stores the first four and
// emits `applied` so that the main window shows them; Browse stores a location at once.
class PreferencesWindow : public QDialog {
    Q_OBJECT
public:
    explicit PreferencesWindow(QWidget* parent = nullptr);

    void Form_Load();
    void cboFile_Click();
    void cmdBrowse_Click();
    void cmdOK_Click();
    void cmdCancel_Click();

signals:
    // OK stored the settings: colours and labels are to be refreshed.
    void applied();

private:
    static constexpr int kSettingsFileItem = 0;
    static constexpr int kPresetsItem = 1;

    std::array<QRadioButton*, 2> m_startup{};
    QLineEdit* m_country = nullptr;
    QCheckBox* m_usAuto = nullptr;
    QRadioButton* m_standard = nullptr;
    QRadioButton* m_modern = nullptr;
    QComboBox* m_file = nullptr;
    QLineEdit* m_path = nullptr;
};

} // namespace corvalent
