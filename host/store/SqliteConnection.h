#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

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
    void transaction();
    void commit();
    void rollback();

    QSqlDatabase database() const;

private:
    QString m_name;
};

} // namespace corvalent::host
