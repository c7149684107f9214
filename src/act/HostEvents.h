#pragma once

#include <QObject>
#include <QString>

namespace corvalent {

// The contact manager's five events as Qt signals, delivered on the UI thread. A backend emits them; the main
// window connects to them.
class HostEvents : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

signals:
    void OnActUserWantsToClose();
    void OnDatabaseClose();
    void OnContactChange(const QString& contactId);
    void OnContactLookupChange();
    void OnContactPosChange(const QString& contactId);
    // Not one of the contact manager's own events: the backend lost it (it quit or crashed).
    void hostLost();
};

} // namespace corvalent
