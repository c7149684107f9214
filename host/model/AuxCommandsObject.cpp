#include "model/AuxCommandsObject.h"

#include "model/AutomationArguments.h"
#include "model/ContactHost.h"

namespace corvalent::host {

using namespace automation;

QVariant AuxCommandsObject::invoke(const QString& member, const QVariantList& args)
{
    // Auxiliary commands are kept in the database, so each member needs one open.
    if (isMember(member, QLatin1String("AuxCommandExists"))) {
        requireCount(args, 1, member);
        const QString name = toText(args, 0, member);
        return openHost().store().auxCommandExists(name);
    }
    if (isMember(member, QLatin1String("AddAuxCommand"))) {
        requireCount(args, 8, member);
        ContactStore::AuxCommand command;
        QString* texts[] = {&command.name, &command.program, &command.folder, &command.title,
                            &command.hint, &command.smallIcon, &command.largeIcon};
        for (qsizetype i = 0; i < 7; ++i)
            *texts[i] = toText(args, i, member);
        command.flags = toInt32(args, 7, member);
        openHost().store().addAuxCommand(command);
        return qint32(0);
    }

    // The members that take a command name and a view number.
    using Placed = bool (ContactStore::*)(const QString&, int) const;
    using Place = void (ContactStore::*)(const QString&, int, bool);
    struct PlacementMember {
        const char* name;
        Placed query;
        Place change;
        bool placed;
    };
    static const PlacementMember kPlacementMembers[] = {
        {"AuxCommandExistsInToolbar", &ContactStore::auxCommandInToolbar, nullptr, false},
        {"AuxCommandExistsInToolsMenu", &ContactStore::auxCommandInToolsMenu, nullptr, false},
        {"AddAuxCommandToToolbar", nullptr, &ContactStore::setAuxCommandInToolbar, true},
        {"RemoveAuxCommandFromToolbar", nullptr, &ContactStore::setAuxCommandInToolbar, false},
        {"AddAuxCommandToToolsMenu", nullptr, &ContactStore::setAuxCommandInToolsMenu, true},
        {"RemoveAuxCommandFromToolsMenu", nullptr, &ContactStore::setAuxCommandInToolsMenu, false},
    };
    for (const PlacementMember& placement : kPlacementMembers) {
        if (!isMember(member, QLatin1String(placement.name)))
            continue;
        requireCount(args, 2, member);
        const QString name = toText(args, 0, member);
        const qint16 view = toInt16(args, 1, member);
        ContactStore& store = openHost().store();
        if (placement.query)
            return (store.*placement.query)(name, view);
        (store.*placement.change)(name, view, placement.placed);
        return QVariant();
    }
    unknownMember("auxiliary commands", member);
}

} // namespace corvalent::host
