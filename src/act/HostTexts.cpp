#include "act/HostTexts.h"

#include "common/ProgramTitle.h"

namespace corvalent {

HostTexts::HostTexts(QString hostName)
    : m_name(std::move(hostName))
{
}

QString HostTexts::integrateMenuItem() const
{
    return integrateCaption() + QStringLiteral("...");
}

QString HostTexts::integrateCaption() const
{
    return QStringLiteral("Integrate with ") + m_name;
}

QString HostTexts::undoUpdateCaption() const
{
    return QStringLiteral("Undo Update ") + m_name;
}

QString HostTexts::updateQuestion() const
{
    if (isAct())
        return QStringLiteral("Are you sure you want to update ACT! current contact?");
    return QStringLiteral("Are you sure you want to update the current contact in %1?").arg(m_name);
}

QString HostTexts::restartQuestion() const
{
    return QStringLiteral("You need to re-start %1 for the changes to take effect!\r\nDo you want to re-start it now?")
        .arg(m_name);
}

QString HostTexts::noDatabaseMessage() const
{
    const QString program = QString::fromLatin1(kProgramTitle);
    if (isAct())
        return QStringLiteral("Please open an ACT database prior to running %1!").arg(program);
    return QStringLiteral("Please open a database in %1 (File > Open Database) prior to running %2!")
        .arg(m_name, program);
}

QString HostTexts::unreachableMessage() const
{
    if (isAct())
        return QStringLiteral(
            "Unable to communicate with ACT!\rPlease run actreg.exe located in the ACT folder and try again");
    return QStringLiteral("Unable to communicate with %1!\rPlease start %1, open a database and try again").arg(m_name);
}

} // namespace corvalent
