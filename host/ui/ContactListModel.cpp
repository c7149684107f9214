#include "ui/ContactListModel.h"

#include "model/ContactHost.h"
#include "store/FieldCatalog.h"

namespace corvalent::host {

namespace {

constexpr int kColumnFields[] = {26, 25, 35, 30, 31, 33, 40};
constexpr int kColumnCount = int(std::size(kColumnFields));
// A few screens' worth of rows: scrolling back and forth stays off the disk, memory stays small.
constexpr int kCachedRows = 2000;

} // namespace

ContactListModel::ContactListModel(ContactHost& host, QObject* parent)
    : QAbstractTableModel(parent), m_host(host), m_rows(kCachedRows)
{
}

int ContactListModel::fieldIdOfColumn(int column)
{
    return column >= 0 && column < kColumnCount ? kColumnFields[column] : -1;
}

int ContactListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_host.lookupIds().size());
}

int ContactListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : kColumnCount;
}

const QStringList* ContactListModel::rowTexts(int row) const
{
    const auto& ids = m_host.lookupIds();
    if (row < 0 || row >= ids.size())
        return nullptr;
    const qint64 id = ids.at(row);
    if (const QStringList* cached = m_rows.object(id))
        return cached;
    auto texts = new QStringList;
    texts->reserve(kColumnCount);
    for (int fieldId : kColumnFields)
        texts->append(m_host.store().fieldText(id, fieldId));
    m_rows.insert(id, texts);
    return texts;
}

QVariant ContactListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return {};
    // A store that fails to read (the file went away under us) shows empty cells rather than ending the program.
    try {
        if (const QStringList* texts = rowTexts(index.row()))
            return texts->value(index.column());
    } catch (...) {
    }
    return {};
}

QVariant ContactListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    const FieldDef* field = fieldById(fieldIdOfColumn(section));
    return field ? field->label : QVariant();
}

void ContactListModel::reload()
{
    beginResetModel();
    m_rows.clear();
    endResetModel();
}

void ContactListModel::contactChanged(qint64 contactId)
{
    m_rows.remove(contactId);
    const auto& ids = m_host.lookupIds();
    // The changed contact is nearly always the current one; look elsewhere only when it is not.
    int row = m_host.currentId() == contactId ? m_host.currentRow() : int(ids.indexOf(contactId));
    if (row >= 0)
        emit dataChanged(index(row, 0), index(row, kColumnCount - 1));
}

} // namespace corvalent::host
