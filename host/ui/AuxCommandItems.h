#pragma once

#include "model/ContactHost.h"
#include "store/ContactStore.h"

#include <QList>

namespace corvalent::host {

// The auxiliary commands the window offers: those placed in the toolbar or the Tools menu of the view that is
// active. The contact manager has views 1 (contacts) and 2 (contact list); commands placed in the other four
// are kept by the store and shown nowhere.
namespace AuxCommandItems {

int viewNumber(ContactHost::View view);

// The placed commands in their stored order; a name placed without a command behind it is left out.
QList<ContactStore::AuxCommand> toolbar(const ContactStore& store, int view);
QList<ContactStore::AuxCommand> toolsMenu(const ContactStore& store, int view);

// Starts the command's program in its folder, detached from the contact manager so that it outlives it.
bool launch(const ContactStore::AuxCommand& command);

} // namespace AuxCommandItems

} // namespace corvalent::host
