#include "store/SqliteConnection.h"

#include "common/Error.h"

#include <QSqlError>
#include <atomic>

namespace corvalent::host {

namespace {

[[noreturn]] void fail(const QString& what, const QSqlError& error)
{
    throw Error(ErrorNumber::AutomationError, QStringLiteral("Database error while %1: %2").arg(what, error.text()));
}

} // namespace

SqliteConnection::SqliteConnection()
{
    static std::atomic<quint64> counter{0};
    m_name = QStringLiteral("corvalent-contacts-%1").arg(++counter);
}

SqliteConnection::~SqliteConnection()
{
    close();
}

void SqliteConnection::open(const QString& path, bool readOnly)
{
    close();
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
    if (!db.isValid())
        throw Error(ErrorNumber::AutomationError, QStringLiteral("The SQLite driver of Qt SQL is not installed"));
    db.setDatabaseName(path);
    if (readOnly)
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
    if (!db.open()) {
        const QSqlError error = db.lastError();
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_name);
        fail(QStringLiteral("opening %1").arg(path), error);
    }
}

void SqliteConnection::close()
{
    if (!QSqlDatabase::contains(m_name))
        return;
    {
        QSqlDatabase db = QSqlDatabase::database(m_name, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(m_name);
}

bool SqliteConnection::isOpen() const
{
    return QSqlDatabase::contains(m_name) && QSqlDatabase::database(m_name, false).isOpen();
}

QSqlDatabase SqliteConnection::database() const
{
    return QSqlDatabase::database(m_name, false);
}

QSqlQuery SqliteConnection::prepare(const QString& sql) const
{
    QSqlQuery query(database());
    query.setForwardOnly(true);
    if (!query.prepare(sql))
        fail(QStringLiteral("preparing \"%1\"").arg(sql), query.lastError());
    return query;
}

void SqliteConnection::exec(const QString& sql) const
{
    QSqlQuery query(database());
    if (!query.exec(sql))
        fail(QStringLiteral("running \"%1\"").arg(sql), query.lastError());
}

void SqliteConnection::exec(QSqlQuery& query) const
{
    if (!query.exec())
        fail(QStringLiteral("running \"%1\"").arg(query.lastQuery()), query.lastError());
}

void SqliteConnection::transaction()
{
    QSqlDatabase db = database();
    if (!db.transaction())
        fail(QStringLiteral("starting a transaction"), db.lastError());
}

void SqliteConnection::commit()
{
    QSqlDatabase db = database();
    if (!db.commit())
        fail(QStringLiteral("committing"), db.lastError());
}

void SqliteConnection::rollback()
{
    database().rollback();
}

} // namespace corvalent::host
