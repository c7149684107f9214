#pragma once

#include <QString>
#include <QVariant>
#include <QVariantList>

namespace corvalent::host {

class ContactHost;

// The members the contact view and the lookup grid share (SetField, AddNewContact, GetCurrentID), so that both
// behave alike.
bool isCurrentContactMember(const QString& member);
QVariant invokeCurrentContactMember(ContactHost& host, const QString& member, const QVariantList& args);

} // namespace corvalent::host
