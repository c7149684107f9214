#include "act/ActSession.h"

#include "act/FieldListCache.h"
#include "common/Error.h"

#include <limits>

namespace corvalent {

namespace {

const QString kViewName = QStringLiteral("CV");

Error objectNotSet(std::source_location at)
{
    return Error(ActSession::kObjectNotSet, QStringLiteral("Object variable or With block variable not set"), at);
}

// The backend raises its errors where it found them; the error box must name the line of the procedure that made
// the call, so the error is raised again there.
QVariant call(const AutomationPtr& object, const QString& member, const QVariantList& args,
              std::source_location at)
{
    if (!object)
        throw objectNotSet(at);
    try {
        return object->invoke(member, args);
    } catch (const Error& e) {
        throw Error(e.number(), e.description(), at);
    }
}

AutomationPtr asObject(const QVariant& value, std::source_location at)
{
    if (!holdsObject(value))
        throw Error(ErrorNumber::TypeMismatch, at);
    AutomationPtr object = toObject(value);
    if (!object)
        throw objectNotSet(at);
    return object;
}

// Every answer is taken as text where text is wanted; "nothing" reads as "".
QString asText(const QVariant& value, std::source_location at)
{
    if (holdsObject(value))
        throw Error(ErrorNumber::TypeMismatch, at);
    return value.isValid() ? value.toString() : QString();
}

qint32 asLong(const QVariant& value, std::source_location at)
{
    if (holdsObject(value) || !value.isValid())
        throw Error(ErrorNumber::TypeMismatch, at);
    bool ok = false;
    const double number = value.toDouble(&ok);
    if (!ok)
        throw Error(ErrorNumber::TypeMismatch, at);
    if (number < double(std::numeric_limits<qint32>::min()) || number > double(std::numeric_limits<qint32>::max()))
        throw Error(ErrorNumber::Overflow, at);
    return qint32(number);
}

bool asBool(const QVariant& value, std::source_location at)
{
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    return asLong(value, at) != 0;
}

AutomationPtr create(AutomationBackend& backend, const QString& progId, std::source_location at)
{
    AutomationPtr object;
    try {
        object = backend.create(progId, at);
    } catch (const Error& e) {
        throw Error(e.number(), e.description(), at);
    }
    if (!object)
        throw Error(ErrorNumber::CannotCreateObject, at);
    return object;
}

} // namespace

ActSession::ActSession() : m_fields(std::make_unique<FieldListCache>(*this)) {}

ActSession::~ActSession() = default;

void ActSession::OpenSession(AutomationBackend& backend, std::source_location at)
{
    m_fields = std::make_unique<FieldListCache>(*this);
    m_offersGetFields.reset();
    m_readAhead.clear();
    m_app = create(backend, kProgIdApp, at);
    call(m_app, QStringLiteral("OpenFile"), {QString()}, at);
    m_database = create(backend, kProgIdDatabase, at);
    call(m_database, QStringLiteral("OpenEx"), {QString()}, at);
    m_contact = asObject(call(m_database, QStringLiteral("Contact"), {}, at), at);
    m_contactFields = asObject(call(m_contact, QStringLiteral("Fields"), {}, at), at);
    m_views = asObject(call(m_app, QStringLiteral("Views"), {}, at), at);
    for (size_t i = 0; i < DefaultFieldIds.size(); ++i)
        DefaultFieldIds[i] = QString::fromLatin1(kDefaultFieldIds[i]);
}

void ActSession::attachEvents(AutomationBackend& backend, std::source_location at)
{
    m_events = create(backend, kProgIdEvents, at);
}

QString ActSession::getOpenDbName(std::source_location at)
{
    return asText(call(m_app, QStringLiteral("GetOpenDBName"), {}, at), at);
}

void ActSession::command(qint16 number, std::source_location at)
{
    call(m_app, QStringLiteral("Command"), {QVariant::fromValue(number)}, at);
}

void ActSession::lockWindowUpdate(bool locked, std::source_location at)
{
    try {
        call(m_app, locked ? QStringLiteral("LockWindowUpdate") : QStringLiteral("UnlockWindowUpdate"), {}, at);
    } catch (const Error& e) {
        if (e.number() != ErrorNumber::MemberNotSupported)
            throw;
    }
}

QString ActSession::getUserId(std::source_location at)
{
    return asText(call(m_app, QStringLiteral("GetUserID"), {}, at), at);
}

qint32 ActSession::activeViewType(std::source_location at)
{
    const AutomationPtr active = asObject(call(m_views, QStringLiteral("GetActive"), {}, at), at);
    return asLong(call(active, QStringLiteral("Type"), {}, at), at);
}

AutomationPtr ActSession::createView(qint16 type, std::source_location at)
{
    return asObject(call(m_views, QStringLiteral("Create"), {QVariant::fromValue(type), kViewName}, at), at);
}

AutomationPtr ActSession::getGrid(const AutomationPtr& listView, std::source_location at)
{
    return asObject(call(listView, QStringLiteral("GetGrid"), {}, at), at);
}

qint32 ActSession::currentRow(const AutomationPtr& grid, std::source_location at)
{
    return asLong(call(grid, QStringLiteral("GetCurrentRow"), {}, at), at);
}

void ActSession::useContactView(AutomationPtr view)
{
    m_readAhead.clear();
    m_fieldSource = std::move(view);
    m_listView.reset();
    m_gridRow.reset();
}

void ActSession::useGrid(AutomationPtr listView, AutomationPtr grid, qint32 row)
{
    m_readAhead.clear();
    m_listView = std::move(listView);
    m_fieldSource = std::move(grid);
    m_gridRow = row;
}

void ActSession::readAhead(const QList<qint32>& fieldIds, std::source_location at)
{
    m_readAhead.clear();
    if (m_offersGetFields == false)
        return;
    QList<qint32> asked;
    QVariantList args;
    if (m_gridRow)
        args << *m_gridRow;
    for (qint32 fieldId : fieldIds) {
        if (fieldId != 0 && !asked.contains(fieldId)) {
            asked << fieldId;
            args << fieldId;
        }
    }
    if (asked.isEmpty())
        return;
    QVariant answer;
    try {
        answer = call(m_fieldSource, QStringLiteral("GetFields"), args, at);
    } catch (const Error& e) {
        // An older contact manager: every field is read on its own, as before there was GetFields.
        if (e.number() != ErrorNumber::MemberNotSupported)
            throw;
        m_offersGetFields = false;
        return;
    }
    m_offersGetFields = true;
    if (answer.typeId() != QMetaType::QStringList)
        throw Error(ErrorNumber::TypeMismatch, at);
    const QStringList texts = answer.toStringList();
    if (texts.size() != asked.size())
        throw Error(ErrorNumber::AutomationError,
                    QStringLiteral("The contact manager answered %1 fields for %2").arg(texts.size()).arg(asked.size()),
                    at);
    for (qsizetype i = 0; i < asked.size(); ++i)
        m_readAhead.insert(asked.at(i), texts.at(i));
}

QString ActSession::getField(qint32 fieldId, std::source_location at)
{
    if (!m_gridRow) {
        const auto found = m_readAhead.constFind(fieldId);
        if (found != m_readAhead.constEnd())
            return *found;
    }
    return asText(call(m_fieldSource, QStringLiteral("GetField"), {fieldId}, at), at);
}

QString ActSession::getField(qint32 fieldId, qint32 row, std::source_location at)
{
    if (m_gridRow == row) {
        const auto found = m_readAhead.constFind(fieldId);
        if (found != m_readAhead.constEnd())
            return *found;
    }
    return asText(call(m_fieldSource, QStringLiteral("GetField"), {fieldId, row}, at), at);
}

QString ActSession::readField(qint32 fieldId, std::source_location at)
{
    if (fieldId == 0)
        return QString();
    return m_gridRow ? getField(fieldId, *m_gridRow, at) : getField(fieldId, at);
}

void ActSession::setField(qint32 fieldId, const QString& text, std::source_location at)
{
    m_readAhead.clear();
    call(m_fieldSource, QStringLiteral("SetField"), {fieldId, text}, at);
}

void ActSession::addNewContact(std::source_location at)
{
    m_readAhead.clear();
    call(m_fieldSource, QStringLiteral("AddNewContact"), {}, at);
}

QString ActSession::getCurrentId(std::source_location at)
{
    return asText(call(m_fieldSource, QStringLiteral("GetCurrentID"), {}, at), at);
}

void ActSession::goTo(const QString& contactId, std::source_location at)
{
    m_readAhead.clear();
    call(m_contact, QStringLiteral("GoTo"), {contactId}, at);
}

QString ActSession::contactData(qint16 fieldId, std::source_location at)
{
    return asText(call(m_contact, QStringLiteral("Data"), {QVariant::fromValue(fieldId)}, at), at);
}

qint32 ActSession::fieldCount(std::source_location at)
{
    return asLong(call(m_contactFields, QStringLiteral("Count"), {}, at), at);
}

qint32 ActSession::fieldIdAt(qint32 position, std::source_location at)
{
    return asLong(call(m_contactFields, QStringLiteral("ID"), {position}, at), at);
}

qint32 ActSession::typeAt(qint32 position, std::source_location at)
{
    return asLong(call(m_contactFields, QStringLiteral("Type"), {position}, at), at);
}

QString ActSession::labelAt(qint32 position, std::source_location at)
{
    return asText(call(m_contactFields, QStringLiteral("Label"), {position}, at), at);
}

qint32 ActSession::fieldType(const QString& fieldId, std::source_location at)
{
    return asLong(call(m_contactFields, QStringLiteral("Type"), {fieldId}, at), at);
}

QString ActSession::label(const QString& fieldId, std::source_location at)
{
    return asText(call(m_contactFields, QStringLiteral("Label"), {fieldId}, at), at);
}

bool ActSession::hasPopupList(const QString& fieldId, std::source_location at)
{
    return asBool(call(m_contactFields, QStringLiteral("HasPopupList"), {fieldId}, at), at);
}

void ActSession::createAuxCommands(AutomationBackend& backend, std::source_location at)
{
    m_auxCommands = create(backend, kProgIdAuxCommands, at);
}

bool ActSession::auxCommandExists(const QString& name, std::source_location at)
{
    return asBool(call(m_auxCommands, QStringLiteral("AuxCommandExists"), {name}, at), at);
}

qint32 ActSession::addAuxCommand(const AuxCommand& c, std::source_location at)
{
    return asLong(call(m_auxCommands, QStringLiteral("AddAuxCommand"),
                       {c.name, c.program, c.folder, c.title, c.hint, c.smallIcon, c.largeIcon, c.flags}, at),
                  at);
}

bool ActSession::auxCommandInToolbar(const QString& name, qint16 view, std::source_location at)
{
    return asBool(call(m_auxCommands, QStringLiteral("AuxCommandExistsInToolbar"), {name, QVariant::fromValue(view)}, at),
                  at);
}

bool ActSession::auxCommandInToolsMenu(const QString& name, qint16 view, std::source_location at)
{
    return asBool(
        call(m_auxCommands, QStringLiteral("AuxCommandExistsInToolsMenu"), {name, QVariant::fromValue(view)}, at), at);
}

void ActSession::placeAuxCommandInToolbar(const QString& name, qint16 view, bool placed, std::source_location at)
{
    call(m_auxCommands, placed ? QStringLiteral("AddAuxCommandToToolbar") : QStringLiteral("RemoveAuxCommandFromToolbar"),
         {name, QVariant::fromValue(view)}, at);
}

void ActSession::placeAuxCommandInToolsMenu(const QString& name, qint16 view, bool placed, std::source_location at)
{
    call(m_auxCommands,
         placed ? QStringLiteral("AddAuxCommandToToolsMenu") : QStringLiteral("RemoveAuxCommandFromToolsMenu"),
         {name, QVariant::fromValue(view)}, at);
}

bool ActSession::isDatabaseOpen(std::source_location at)
{
    return asLong(call(m_events, kEventMemberDatabaseOpen, {qint32(0)}, at), at) >= 1;
}

void ActSession::detach(std::source_location at)
{
    call(m_events, kEventMemberDetach, {}, at);
}

bool ActSession::isRunning(std::source_location at)
{
    return asBool(call(m_events, kEventMemberIsRunning, {}, at), at);
}

} // namespace corvalent
