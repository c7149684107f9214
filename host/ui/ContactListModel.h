#pragma once

#include <QAbstractTableModel>
#include <QCache>
#include <QStringList>

namespace corvalent::host {

class ContactHost;

// The lookup as a table, one row per contact. Cells are read from the store only when a view asks for them and
// kept in a bounded cache, so that a lookup of a million contacts costs nothing until rows are painted.
class ContactListModel : public QAbstractTableModel {
    Q_OBJECT
public:
    explicit ContactListModel(ContactHost& host, QObject* parent = nullptr);

    // The field shown in a column.
    static int fieldIdOfColumn(int column);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

public slots:
    // The lookup was replaced or the database changed: every row may be different.
    void reload();
    // One contact's fields changed.
    void contactChanged(qint64 contactId);

private:
    const QStringList* rowTexts(int row) const;

    ContactHost& m_host;
    // Keyed by contact ID, not by row, so that a lookup change cannot show one contact's texts in another's row.
    mutable QCache<qint64, QStringList> m_rows;
};

} // namespace corvalent::host
