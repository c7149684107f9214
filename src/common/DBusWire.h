#pragma once

#include <QString>

// How the contact manager's automation objects travel over the session bus. Both sides include this one file.
//
// The contact manager owns kBusName and serves one object at kRootPath with interface kInterface:
//   Create(s progId) -> o               a new object of that ProgID, as an object path below kObjectPrefix
//   Invoke(o object, s member, av args) -> v
//                                       calls a member; arguments and result are plain variants (string, int32,
//                                       int16 as int16, bool, double; an answer may also be a list of
//                                       strings, "as"), an object reference travels as its object path (type
//                                       "o"), "nothing" as an empty string
//   Release(o object)                   forgets an object; objects of a client that leaves the bus go too
// and the signals
//   OnActUserWantsToClose(), OnDatabaseClose(), OnContactChange(s), OnContactLookupChange(),
//   OnContactPosChange(s).
// A failing call answers the D-Bus error kErrorName with the message "<number>|<description>".
namespace corvalent::dbuswire {

inline const QString kBusName = QStringLiteral("org.corvalent.Contacts");
inline const QString kRootPath = QStringLiteral("/org/corvalent/Contacts");
inline const QString kObjectPrefix = QStringLiteral("/org/corvalent/Contacts/object/");
inline const QString kInterface = QStringLiteral("org.corvalent.Automation1");
inline const QString kErrorName = QStringLiteral("org.corvalent.Automation1.Error");

// Every call from the add-on gives up after this long, so a hung contact manager never freezes the window.
inline constexpr int kCallTimeoutMs = 5000;

} // namespace corvalent::dbuswire
