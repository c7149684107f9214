#pragma once

#include <QDialog>

class QLineEdit;

namespace corvalent {

class ServiceEditorWindow;

// frmCountry: the country file and the default country of the service in the editor window that opened it (its
// origin). OK hands both to the origin and, when the origin edits an installed service, writes them into that
// service's file at once.
class CountryDialog : public QDialog {
    Q_OBJECT
public:
    explicit CountryDialog(ServiceEditorWindow* origin);

    void Form_Load();
    void cmdBrowse_Click();
    void cmdOK_Click();
    void cmdCancel_Click();

private:
    ServiceEditorWindow* m_origin;
    QLineEdit* m_file = nullptr;
    QLineEdit* m_default = nullptr;
};

} // namespace corvalent
