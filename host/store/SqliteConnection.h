#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringList>
#include <QVector>

namespace corvalent::host {

// One Qt SQL connection to a SQLite file, under a connection name no other instance shares, so that several
// databases (the open one, one being written, a test's) can be open at once. Failures throw Error 440 with
// SQLite's own message.
class SqliteConnection {
public:
    SqliteConnection();
    ~SqliteConnection();
    SqliteConnection(const SqliteConnection&) = delete;
    SqliteConnection& operator=(const SqliteConnection&) = delete;

    // SQLite creates a missing file when it may write; callers check for the file first where that matters.
    void open(const QString& path, bool readOnly);
    // Every query made on this connection must be gone before this is called.
    void close();
    bool isOpen() const;

    QSqlQuery prepare(const QString& sql) const;
    void exec(const QString& sql) const;
    void exec(QSqlQuery& query) const;
    // The first column of every row `sql` answers, as integers, with `texts` bound to its parameters in order.
    // Read straight from SQLite under Qt's driver: a million rows cost a third of what they cost through
    // QSqlQuery's variants.
    QVector<qint64> integers(const QString& sql, const QStringList& texts = {}) const;
    void transaction();
    void commit();
    void rollback();

    QSqlDatabase database() const;

private:
    QString m_name;
};

} // namespace corvalent::host
