#include "store/SqliteConnection.h"

#include "common/Error.h"

#include <QSqlDriver>
#include <QSqlError>
#include <atomic>
#include <sqlite3.h>

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

QVector<qint64> SqliteConnection::integers(const QString& sql, const QStringList& texts) const
{
    const QVariant handle = database().driver()->handle();
    if (qstrcmp(handle.typeName(), "sqlite3*") != 0)
        throw Error(ErrorNumber::AutomationError, QStringLiteral("Qt SQL's SQLite driver gives no SQLite handle"));
    sqlite3* db = *static_cast<sqlite3* const*>(handle.constData());
    QVector<qint64> result;
    sqlite3_stmt* statement = nullptr;
    const QByteArray text = sql.toUtf8();
    int status = sqlite3_prepare_v2(db, text.constData(), int(text.size()), &statement, nullptr);
    for (int i = 0; status == SQLITE_OK && i < texts.size(); ++i) {
        const QByteArray value = texts.at(i).toUtf8();
        status = sqlite3_bind_text(statement, i + 1, value.constData(), int(value.size()), SQLITE_TRANSIENT);
    }
    while (status == SQLITE_OK && (status = sqlite3_step(statement)) == SQLITE_ROW) {
        result.append(sqlite3_column_int64(statement, 0));
        status = SQLITE_OK;
    }
    const QString message = status == SQLITE_DONE ? QString() : QString::fromUtf8(sqlite3_errmsg(db));
    sqlite3_finalize(statement);
    if (status != SQLITE_DONE)
        throw Error(ErrorNumber::AutomationError,
                    QStringLiteral("Database error while running \"%1\": %2").arg(sql, message));
    return result;
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
