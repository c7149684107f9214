#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace corvalent::host {

// Field types, numbered as the contact manager's automation interface reports them.
namespace FieldType {
constexpr int Character = 1;
constexpr int Uppercase = 2;
constexpr int InitialCaps = 3;
constexpr int Numeric = 4;
constexpr int Currency = 5;
constexpr int Lowercase = 6;
constexpr int Date = 7;
constexpr int Time = 8;
constexpr int Phone = 14;
constexpr int Url = 15; // e-mail addresses and web sites
} // namespace FieldType

struct FieldDef {
    int id = -1; // -1: a deleted position in the field list
    QString label;
    int type = FieldType::Character;
    QStringList popupList; // a drop-down list of suggested values; empty when the field has none
    bool readOnly = false;
};

// The field list in position order, gaps included (see docs/contact-manager.md for the table).
const QList<FieldDef>& fieldPositions();
// The field of an ID, or nullptr.
const FieldDef* fieldById(int id);

} // namespace corvalent::host
