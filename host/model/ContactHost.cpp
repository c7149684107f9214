#include "model/ContactHost.h"

#include "common/Error.h"
#include "model/ApplicationObject.h"
#include "model/AuxCommandsObject.h"
#include "model/DatabaseObject.h"
#include "model/EventControlObject.h"

#include <QTimer>
#include <algorithm>
#include <memory>

namespace corvalent::host {

struct ContactHost::Impl {
    ContactStore store;
    QVector<qint64> lookup;
    // Lookups come from the store in ID order, and most stay so: their rows are found by bisection, a million
    // contacts in twenty steps instead of a scan on every move.
    bool lookupSorted = true;
    int row = -1;
    View view = View::Contact;
    QTimer updateLock;

    void requireOpen() const
    {
        if (!store.isOpen())
            throw Error(ErrorNumber::AutomationError, QStringLiteral("No database is open"));
    }

    qsizetype rowOf(qint64 contactId) const
    {
        if (!lookupSorted)
            return lookup.indexOf(contactId);
        const auto found = std::lower_bound(lookup.begin(), lookup.end(), contactId);
        return found != lookup.end() && *found == contactId ? found - lookup.begin() : -1;
    }

    // A lookup read from the store, in ID order.
    void setLookup(QVector<qint64> ids)
    {
        lookup = std::move(ids);
        lookupSorted = true;
    }

    void append(qint64 contactId)
    {
        lookupSorted = lookupSorted && (lookup.isEmpty() || lookup.last() < contactId);
        lookup.append(contactId);
    }

    // After the lookup changed: the current contact stays current when it is still in it, else the first is.
    void keepCurrent(qint64 previous)
    {
        const qsizetype found = previous < 0 ? -1 : rowOf(previous);
        row = found >= 0 ? int(found) : (lookup.isEmpty() ? -1 : 0);
    }
};

ContactHost::ContactHost(QObject* parent) : QObject(parent), d(std::make_unique<Impl>())
{
    // A client that locks the window and then dies or forgets must not leave it frozen for good.
    d->updateLock.setSingleShot(true);
    d->updateLock.setInterval(kMaxUpdateLockMs);
    connect(&d->updateLock, &QTimer::timeout, this, [this] { emit windowUpdateLocked(false); });
}

ContactHost::~ContactHost() = default;

void ContactHost::openDatabase(const QString& path)
{
    // A file that cannot be opened is refused before anything changes: the open database stays open and no
    // client hears that it closed.
    {
        ContactStore probe;
        probe.open(path);
    }
    closeDatabase();
    d->store.open(path);
    d->setLookup(d->store.allContactIds());
    d->row = d->lookup.isEmpty() ? -1 : 0;
    emit databaseOpened(d->store.path());
    emit OnContactLookupChange();
}

void ContactHost::newDatabase(const QString& path)
{
    {
        ContactStore fresh;
        fresh.create(path);
    }
    openDatabase(path);
}

void ContactHost::closeDatabase()
{
    if (!d->store.isOpen())
        return;
    d->store.close();
    d->lookup.clear();
    d->row = -1;
    emit OnDatabaseClose();
}

bool ContactHost::isDatabaseOpen() const
{
    return d->store.isOpen();
}

ContactStore& ContactHost::store()
{
    return d->store;
}

const QVector<qint64>& ContactHost::lookupIds() const
{
    return d->lookup;
}

int ContactHost::currentRow() const
{
    return d->row;
}

qint64 ContactHost::currentId() const
{
    return d->row < 0 ? -1 : d->lookup.at(d->row);
}

void ContactHost::lookupAll()
{
    d->requireOpen();
    const qint64 previous = currentId();
    d->setLookup(d->store.allContactIds());
    d->keepCurrent(previous);
    emit OnContactLookupChange();
}

void ContactHost::lookupText(const QString& text)
{
    d->requireOpen();
    const qint64 previous = currentId();
    d->setLookup(d->store.lookup(text));
    d->keepCurrent(previous);
    emit OnContactLookupChange();
}

void ContactHost::moveToRow(int row)
{
    d->requireOpen();
    if (row < 0 || row >= d->lookup.size())
        throw Error(ErrorNumber::AutomationError,
                    QStringLiteral("Row %1 does not exist: the lookup has %2 row(s)").arg(row).arg(d->lookup.size()));
    if (row == d->row)
        return;
    d->row = row;
    emit OnContactPosChange(QString::number(currentId()));
}

void ContactHost::moveTo(qint64 contactId)
{
    d->requireOpen();
    qsizetype row = d->rowOf(contactId);
    if (row < 0) {
        if (!d->store.contactExists(contactId))
            throw Error(ErrorNumber::AutomationError, QStringLiteral("No contact has the ID %1").arg(contactId));
        d->append(contactId);
        row = d->lookup.size() - 1;
        emit OnContactLookupChange();
    }
    moveToRow(int(row));
}

void ContactHost::first()
{
    d->requireOpen();
    if (!d->lookup.isEmpty())
        moveToRow(0);
}

void ContactHost::previous()
{
    d->requireOpen();
    if (d->row > 0)
        moveToRow(d->row - 1);
}

void ContactHost::next()
{
    d->requireOpen();
    if (d->row + 1 < d->lookup.size())
        moveToRow(d->row + 1);
}

void ContactHost::last()
{
    d->requireOpen();
    if (!d->lookup.isEmpty())
        moveToRow(int(d->lookup.size() - 1));
}

void ContactHost::goToMyRecord()
{
    d->requireOpen();
    moveTo(d->store.myRecordId());
}

void ContactHost::setField(int fieldId, const QString& text)
{
    d->requireOpen();
    const qint64 current = currentId();
    if (current < 0)
        throw Error(ErrorNumber::AutomationError, QStringLiteral("There is no current contact to change"));
    d->store.setFieldText(current, fieldId, text);
    emit OnContactChange(QString::number(current));
}

qint64 ContactHost::addNewContact()
{
    d->requireOpen();
    const qint64 id = d->store.addContact();
    d->append(id);
    d->row = int(d->lookup.size() - 1);
    // Only the lookup change: clients that add a contact wait for exactly this one and ignore it, while a
    // position change would make them read the new, empty contact over what they are about to write.
    emit OnContactLookupChange();
    return id;
}

ContactHost::View ContactHost::activeView() const
{
    return d->view;
}

void ContactHost::setActiveView(View view)
{
    if (view == d->view)
        return;
    d->view = view;
    emit activeViewChanged(view);
}

void ContactHost::lockWindowUpdate(bool locked)
{
    if (locked == d->updateLock.isActive())
        return;
    if (locked)
        d->updateLock.start();
    else
        d->updateLock.stop();
    emit windowUpdateLocked(locked);
}

bool ContactHost::isWindowUpdateLocked() const
{
    return d->updateLock.isActive();
}

void ContactHost::command(int number)
{
    switch (number) {
    case 104: emit refreshRequested(); return;
    case 150: emit closeRequested(); return;
    default:
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("Command %1 is neither 104 (refresh) nor 150 (close)").arg(number));
    }
}

AutomationPtr ContactHost::createObject(const QString& progId)
{
    // ProgIDs are matched without regard to case, as the system registry matches them.
    auto is = [&](const QString& known) { return progId.compare(known, Qt::CaseInsensitive) == 0; };
    if (is(kProgIdApp))
        return std::make_shared<ApplicationObject>(*this);
    if (is(kProgIdDatabase))
        return std::make_shared<DatabaseObject>(*this);
    if (is(kProgIdAuxCommands))
        return std::make_shared<AuxCommandsObject>(*this);
    if (is(kProgIdEvents))
        return std::make_shared<EventControlObject>(*this);
    throw Error(ErrorNumber::CannotCreateObject,
                QStringLiteral("No object has the ProgID \"%1\"").arg(progId.left(80)));
}

void ContactHost::userWantsToClose()
{
    emit OnActUserWantsToClose();
    closeDatabase();
}

} // namespace corvalent::host
