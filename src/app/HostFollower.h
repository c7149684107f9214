#pragma once

#include "act/ActSession.h"
#include "act/AutomationBackend.h"
#include "act/ContactCapture.h"
#include "act/HostEvents.h"

#include <QMetaObject>
#include <QObject>
#include <QTimer>

namespace corvalent {

// The main window's reaction to the contact manager: the contact events capture again, the closing events close
// the window, and a restart asked for by the integration closes the contact manager, opens its database again
// and ends the program two ticks later.
class HostFollower : public QObject {
    Q_OBJECT
public:
    HostFollower(ActSession& session, ContactCapture& capture, QObject* parent = nullptr);

    void follow(HostEvents& events);
    // No event reaches the window after it has closed.
    void stopFollowing();

    // True while "New Contact" creates a contact: the lookup change that adding fires is not followed.
    bool AddingContact = false;
    // Set by the integration when the user agrees to restart the contact manager.
    bool RestartPending = false;
    qint16 TickCount = 0;
    QTimer tmr1;

    void ActEvent1_OnContactChange();
    void ActEvent1_OnContactPosChange();
    void ActEvent1_OnContactLookupChange();
    void ActEvent1_OnDatabaseClose();
    void ActEvent1_OnActUserWantsToClose();
    // The contact manager went away without a word (it crashed or was killed): there is nothing left to follow.
    void hostLost();

    // Closes the contact manager and opens its database again, then starts tmr1. Runs when the window unloads
    // with RestartPending set.
    void restartHost();
    void tmr1_Timer();

    // Whether a contact manager answers with a database open within `ms`, asked again every few tenths of a second
    // with the event loop running. A program started again after a restart waits so for the contact manager to
    // come back.
    static bool WaitForHost(AutomationBackend& backend, int ms);

signals:
    // A capture ran for an event; the window refreshes what depends on the captured contact.
    void captured();
    // The window must close.
    void unloadRequested();
    // The program must end now.
    void endProgram();

private:
    void captureAgain(const QString& location);
    void detachFromClosingHost(const QString& location);

    ActSession& m_session;
    ContactCapture& m_capture;
    QList<QMetaObject::Connection> m_connections;
};

} // namespace corvalent
