#include "ui/ContactView.h"

#include "store/ContactStore.h"
#include "store/FieldCatalog.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>

namespace corvalent::host {

namespace {

// The business fields stand on the left, the home address and the rest on the right, as on a printed card.
constexpr int kFirstRightPosition = 18;

} // namespace

ContactView::ContactView(QWidget* parent) : QWidget(parent)
{
    auto content = new QWidget;
    auto columns = new QHBoxLayout(content);
    auto left = new QFormLayout;
    auto right = new QFormLayout;
    columns->addLayout(left);
    columns->addSpacing(24);
    columns->addLayout(right);

    const QList<FieldDef>& positions = fieldPositions();
    for (int position = 0; position < positions.size(); ++position) {
        const FieldDef& field = positions.at(position);
        if (field.id < 0)
            continue;
        const QString name = QStringLiteral("field%1").arg(field.id);
        Editor editor;
        QWidget* widget = nullptr;
        if (!field.popupList.isEmpty()) {
            editor.combo = new QComboBox;
            editor.combo->setEditable(true);
            // The list suggests values; typing one in must not grow the list.
            editor.combo->setInsertPolicy(QComboBox::NoInsert);
            editor.combo->addItems(field.popupList);
            editor.line = editor.combo->lineEdit();
            connect(editor.combo, &QComboBox::activated, this, [this, id = field.id] { finishEdit(id); });
            widget = editor.combo;
        } else {
            editor.line = new QLineEdit;
            editor.line->setReadOnly(field.readOnly);
            widget = editor.line;
        }
        widget->setObjectName(name);
        widget->setAccessibleName(field.label);
        if (!field.readOnly)
            connect(editor.line, &QLineEdit::editingFinished, this, [this, id = field.id] { finishEdit(id); });
        auto label = new QLabel(field.label + QLatin1Char(':'));
        label->setBuddy(widget);
        (position < kFirstRightPosition ? left : right)->addRow(label, widget);
        m_editors.insert(field.id, editor);
    }

    auto scroll = new QScrollArea;
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(scroll);
}

void ContactView::showContact(const ContactStore& store, qint64 contactId)
{
    if (contactId < 0 || !store.isOpen()) {
        clear();
        return;
    }
    // Read everything first: a store that fails half-way must not leave half a contact on the screen.
    QHash<int, QString> texts;
    for (auto it = m_editors.cbegin(); it != m_editors.cend(); ++it)
        texts.insert(it.key(), store.fieldText(contactId, it.key()));
    for (auto it = m_editors.begin(); it != m_editors.end(); ++it)
        setShown(it.value(), texts.value(it.key()), true);
}

void ContactView::clear()
{
    for (Editor& editor : m_editors)
        setShown(editor, QString(), false);
}

void ContactView::setShown(Editor& editor, const QString& text, bool enabled)
{
    editor.shown = text;
    // Setting an unchanged text would still move the cursor of the editor being used.
    if (editor.line->text() != text)
        editor.line->setText(text);
    (editor.combo ? static_cast<QWidget*>(editor.combo) : editor.line)->setEnabled(enabled);
}

void ContactView::commitEdits()
{
    // Collected first: the first write refreshes the form, which would wipe the texts still to be written.
    QList<std::pair<int, QString>> pending;
    for (auto it = m_editors.cbegin(); it != m_editors.cend(); ++it) {
        if (it->line->isEnabled() && !it->line->isReadOnly() && it->line->text() != it->shown)
            pending.append({it.key(), it->line->text()});
    }
    for (const auto& [fieldId, text] : pending)
        emit fieldEdited(fieldId, text);
}

QWidget* ContactView::editor(int fieldId) const
{
    const auto it = m_editors.constFind(fieldId);
    if (it == m_editors.constEnd())
        return nullptr;
    return it->combo ? static_cast<QWidget*>(it->combo) : it->line;
}

QString ContactView::text(int fieldId) const
{
    const auto it = m_editors.constFind(fieldId);
    return it == m_editors.constEnd() ? QString() : it->line->text();
}

void ContactView::finishEdit(int fieldId)
{
    const auto it = m_editors.constFind(fieldId);
    if (it == m_editors.constEnd() || !it->line->isEnabled() || it->line->isReadOnly())
        return;
    // Leaving a field untouched, or Return followed by leaving it, must not write (and fire) again.
    const QString text = it->line->text();
    if (text != it->shown)
        emit fieldEdited(fieldId, text);
}

} // namespace corvalent::host
