#pragma once

#include <QHash>
#include <QWidget>

class QComboBox;
class QLineEdit;

namespace corvalent::host {

class ContactStore;

// The contact view: every field of the field list in position order, a label and an editor each. Editors are
// named "field" + the field ID. An edit is reported once the editor is done with it (Return, leaving the field,
// picking from the list), and only when the text differs from what the contact holds.
class ContactView : public QWidget {
    Q_OBJECT
public:
    explicit ContactView(QWidget* parent = nullptr);

    // Shows a contact's fields; contactId -1 (or a closed store) empties and disables the form.
    void showContact(const ContactStore& store, qint64 contactId);
    void clear();
    // Reports every field typed into but not yet finished, before the contact goes away under it.
    void commitEdits();

    QWidget* editor(int fieldId) const;
    QString text(int fieldId) const;

signals:
    void fieldEdited(int fieldId, const QString& text);

private:
    struct Editor {
        QLineEdit* line = nullptr; // the line edit, also of a combo box
        QComboBox* combo = nullptr;
        QString shown;             // the contact's text as last shown
    };
    void finishEdit(int fieldId);
    void setShown(Editor& editor, const QString& text, bool enabled);

    QHash<int, Editor> m_editors;
};

} // namespace corvalent::host
