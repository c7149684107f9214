#include "store/FieldCatalog.h"

namespace corvalent::host {

namespace {

const QStringList kStates = {
    QStringLiteral("AB"), QStringLiteral("BC"), QStringLiteral("ON"), QStringLiteral("QC"), QStringLiteral("NB"),
    QStringLiteral("NS"), QStringLiteral("CA"), QStringLiteral("FL"), QStringLiteral("IL"), QStringLiteral("MA"),
    QStringLiteral("NY"), QStringLiteral("TX"), QStringLiteral("VT"), QStringLiteral("WA"),
};

const QStringList kCountries = {
    QStringLiteral("Canada"),  QStringLiteral("United States"), QStringLiteral("France"),
    QStringLiteral("United Kingdom"), QStringLiteral("Germany"), QStringLiteral("Mexico"),
    QStringLiteral("Spain"),   QStringLiteral("Italy"),         QStringLiteral("Belgium"),
    QStringLiteral("Switzerland"),
};

QList<FieldDef> buildPositions()
{
    using namespace FieldType;
    const FieldDef deleted; // id -1
    auto field = [](int id, const char* label, int type, QStringList popup = {}, bool readOnly = false) {
        return FieldDef{id, QString::fromLatin1(label), type, std::move(popup), readOnly};
    };
    // Positions 10 and 17 held fields that were removed long ago; their places stay, as in any database
    // that has been in use for years, so that walking by position has to skip them.
    return {
        field(25, "Company", Character),
        field(26, "Contact", InitialCaps),
        field(34, "Title", Character,
              {QStringLiteral("President"), QStringLiteral("Director"), QStringLiteral("Manager"),
               QStringLiteral("Sales"), QStringLiteral("Owner")}),
        field(27, "Address 1", Character),
        field(28, "Address 2", Character),
        field(29, "Address 3", Character),
        field(30, "City", InitialCaps),
        field(31, "State", Uppercase, kStates),
        field(32, "Zip", Uppercase),
        field(33, "Country", InitialCaps, kCountries),
        deleted,
        field(35, "Phone", Phone),
        field(36, "Fax", Phone),
        field(37, "Home Phone", Phone),
        field(38, "Mobile Phone", Phone),
        field(40, "E-mail", Url),
        field(41, "Web Site", Url),
        deleted,
        field(65, "Home Address 1", Character),
        field(66, "Home Address 2", Character),
        field(67, "Home City", InitialCaps),
        field(68, "Home State", Uppercase, kStates),
        field(69, "Home Zip", Uppercase),
        field(70, "Home Country", InitialCaps, kCountries),
        field(78, "Create Date", Date, {}, true),
        field(79, "Edit Date", Date, {}, true),
        field(80, "User 1", Character),
        field(81, "User 2", Character),
        field(82, "User 3", Character),
        field(83, "ID/Status", Character,
              {QStringLiteral("Customer"), QStringLiteral("Prospect"), QStringLiteral("Supplier"),
               QStringLiteral("Personal")}),
    };
}

} // namespace

const QList<FieldDef>& fieldPositions()
{
    static const QList<FieldDef> positions = buildPositions();
    return positions;
}

const FieldDef* fieldById(int id)
{
    if (id < 0)
        return nullptr;
    for (const FieldDef& field : fieldPositions()) {
        if (field.id == id)
            return &field;
    }
    return nullptr;
}

} // namespace corvalent::host
