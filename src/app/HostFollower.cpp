#include "app/HostFollower.h"

#include "common/ErrorTrap.h"
#include "common/Launcher.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QFileInfo>

namespace corvalent {

HostFollower::HostFollower(ActSession& session, ContactCapture& capture, QObject* parent)
    : QObject(parent), m_session(session), m_capture(capture)
{
    tmr1.setInterval(1000);
    connect(&tmr1, &QTimer::timeout, this, &HostFollower::tmr1_Timer);
}

void HostFollower::follow(HostEvents& events)
{
    stopFollowing();
    m_connections = {
        connect(&events, &HostEvents::OnContactChange, this, &HostFollower::ActEvent1_OnContactChange),
        connect(&events, &HostEvents::OnContactPosChange, this, &HostFollower::ActEvent1_OnContactPosChange),
        connect(&events, &HostEvents::OnContactLookupChange, this, &HostFollower::ActEvent1_OnContactLookupChange),
        connect(&events, &HostEvents::OnDatabaseClose, this, &HostFollower::ActEvent1_OnDatabaseClose),
        connect(&events, &HostEvents::OnActUserWantsToClose, this, &HostFollower::ActEvent1_OnActUserWantsToClose),
        connect(&events, &HostEvents::hostLost, this, &HostFollower::hostLost),
    };
}

void HostFollower::stopFollowing()
{
    for (const QMetaObject::Connection& c : std::as_const(m_connections))
        disconnect(c);
    m_connections.clear();
}

void HostFollower::captureAgain(const QString& location)
{
    trappedSub(location, [&] {
        m_capture.ResetFields = true;
        m_capture.Get_Contact(false);
        emit captured();
    });
}

void HostFollower::ActEvent1_OnContactChange()
{
    captureAgain(QStringLiteral("frmMain: Sub ActEvent1_OnContactChange"));
}

void HostFollower::ActEvent1_OnContactPosChange()
{
    captureAgain(QStringLiteral("frmMain: Sub ActEvent1_OnContactPosChange"));
}

void HostFollower::ActEvent1_OnContactLookupChange()
{
    if (!AddingContact)
        captureAgain(QStringLiteral("frmMain: Sub ActEvent1_OnContactLookupChange"));
}

void HostFollower::detachFromClosingHost(const QString& location)
{
    trappedSub(location, [&] {
        try {
            m_session.detach();
        } catch (const Error& e) {
            // The contact manager does not wait for its clients once it has announced that it closes, so the
            // detach often finds it gone. That is the outcome the detach was for, not an error to show.
            if (e.number() != ErrorNumber::CannotCreateObject && e.number() != ErrorNumber::AutomationError)
                throw;
        }
    });
}

void HostFollower::ActEvent1_OnDatabaseClose()
{
    // The window closes even when detaching fails: the contact manager it would detach from is going anyway.
    detachFromClosingHost(QStringLiteral("frmMain: Sub ActEvent1_OnDatabaseClose"));
    emit unloadRequested();
}

void HostFollower::ActEvent1_OnActUserWantsToClose()
{
    detachFromClosingHost(QStringLiteral("frmMain: Sub ActEvent1_OnActUserWantsToClose"));
    if (!RestartPending)
        emit unloadRequested();
}

void HostFollower::hostLost()
{
    if (!RestartPending)
        emit unloadRequested();
}

void HostFollower::restartHost()
{
    trappedSub(QStringLiteral("frmMain: Sub Form_Unload"), [&] {
        const QString database = m_session.getOpenDbName();
        m_session.command(ActSession::kCommandClose);
        m_session.releaseApp();
        // The database's own folder, where the contact manager would have been started from by a double-click.
        Launcher::instance().open(database, QFileInfo(database).absolutePath());
        TickCount = 0;
        tmr1.start();
    });
}

void HostFollower::tmr1_Timer()
{
    ++TickCount;
    if (TickCount == 2) {
        tmr1.stop();
        emit endProgram();
    }
}

bool HostFollower::WaitForHost(AutomationBackend& backend, int ms)
{
    constexpr int kAskEveryMs = 200;
    QDeadlineTimer deadline(ms);
    for (;;) {
        try {
            ActSession probe;
            probe.attachEvents(backend);
            if (probe.isDatabaseOpen())
                return true;
        } catch (const Error&) {
            // Not there yet, or still opening its database.
        }
        if (deadline.hasExpired())
            return false;
        QEventLoop pause;
        QTimer::singleShot(kAskEveryMs, &pause, &QEventLoop::quit);
        pause.exec();
    }
}

} // namespace corvalent
