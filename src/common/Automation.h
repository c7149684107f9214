#pragma once

#include <QMetaType>
#include <QString>
#include <QVariant>
#include <QVariantList>
#include <memory>

namespace corvalent {

class AutomationObject;
using AutomationPtr = std::shared_ptr<AutomationObject>;

// An object of the contact manager, bound late: members are called by name with a list of variant arguments and
// answer a variant, which may hold another object (an AutomationPtr). Properties are members called without
// arguments. The contact manager serves these objects in-process (its object model) and over the session bus;
// the add-on sees the same interface either way.
//
// A failing call throws corvalent::Error: 438 for a member the object does not have, 5 for wrong arguments
// (count or value), 13 for an argument of the wrong type, 440 for a failure inside the contact manager, 429 when
// the contact manager cannot be reached.
class AutomationObject {
public:
    virtual ~AutomationObject() = default;
    virtual QVariant invoke(const QString& member, const QVariantList& args = {}) = 0;
};

} // namespace corvalent

// Before any use in a variant: an optimising compiler instantiates the helpers below where they stand.
Q_DECLARE_METATYPE(corvalent::AutomationPtr)

namespace corvalent {

// Helpers for results and arguments.
inline QVariant toVariant(const AutomationPtr& object)
{
    return QVariant::fromValue(object);
}
inline bool holdsObject(const QVariant& value)
{
    return value.metaType() == QMetaType::fromType<AutomationPtr>();
}
inline AutomationPtr toObject(const QVariant& value)
{
    return holdsObject(value) ? value.value<AutomationPtr>() : nullptr;
}

// ProgIDs of the contact manager's creatable objects.
inline const QString kProgIdApp = QStringLiteral("ACTOLE.APPOBJECT");
inline const QString kProgIdDatabase = QStringLiteral("ACTOLE.DATABASE");
inline const QString kProgIdAuxCommands = QStringLiteral("ACTOLE.AUXCMDS");
inline const QString kProgIdEvents = QStringLiteral("ACTEVENTLib.ActEvent");

// Members of the event control, known elsewhere only by their dispatch numbers.
inline const QString kEventMemberDatabaseOpen = QStringLiteral("IsDatabaseOpen"); // dispatch 1: (0) -> count >= 1 when a database is open
inline const QString kEventMemberDetach = QStringLiteral("Detach");               // dispatch 2: () -> nothing
inline const QString kEventMemberIsRunning = QStringLiteral("IsRunning");         // dispatch 3: () -> bool

} // namespace corvalent
