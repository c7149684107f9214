#include "ui/AuxCommandItems.h"

#include <QProcess>

namespace corvalent::host::AuxCommandItems {

namespace {

QList<ContactStore::AuxCommand> resolve(const ContactStore& store, const QStringList& names)
{
    QList<ContactStore::AuxCommand> commands;
    for (const QString& name : names) {
        if (auto command = store.auxCommand(name))
            commands.append(*command);
    }
    return commands;
}

} // namespace

int viewNumber(ContactHost::View view)
{
    return view == ContactHost::View::Contact ? 1 : 2;
}

QList<ContactStore::AuxCommand> toolbar(const ContactStore& store, int view)
{
    return store.isOpen() ? resolve(store, store.toolbarCommands(view)) : QList<ContactStore::AuxCommand>();
}

QList<ContactStore::AuxCommand> toolsMenu(const ContactStore& store, int view)
{
    return store.isOpen() ? resolve(store, store.toolsMenuCommands(view)) : QList<ContactStore::AuxCommand>();
}

bool launch(const ContactStore::AuxCommand& command)
{
    return QProcess::startDetached(command.program, {}, command.folder);
}

} // namespace corvalent::host::AuxCommandItems
