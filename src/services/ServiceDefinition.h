#pragma once

#include <QString>
#include <array>
#include <optional>
#include <source_location>

namespace corvalent {

inline constexpr int kFieldRows = 10;
inline constexpr int kCustomRows = 3; // rows 7, 8 and 9 carry their own captions

// Pseudo-field codes a service row may name instead of a contact field.
namespace FieldCode {
constexpr int None = 0;
constexpr int StreetNumber = 777;         // "->Street number"
constexpr int AddressWithoutNumber = 778; // "->Address w/o Street number"
constexpr int CityState = 779;            // "->City, State"
constexpr int PhoneNumbers = 888;         // "->Phone Numbers"
} // namespace FieldCode

// Service types, the values of the Base key.
namespace ServiceBase {
constexpr int None = -1; // no type chosen: Base is not written
constexpr int Address = 0;
constexpr int Phone = 1;
constexpr int Other = 2;
} // namespace ServiceBase

// The section every key of a service file lives in.
inline const QString kServiceSection = QStringLiteral("Settings");

// How a service wants its values sent: "utf-8" (in any case, as charset names go) asks for UTF-8, percent-encoded;
// a missing key and any other value keep values unescaped and accent-folded.
inline const QString kEncodingKey = QStringLiteral("Encoding");
inline const QString kUtf8Encoding = QStringLiteral("utf-8");
bool IsUtf8Encoding(const QString& value);

// Service names may hold "."; file names and the Name key hold "~" in their place, because the first "." of a
// file name would be taken for the start of its extension.
// One key of a service file's "Settings" section, with the caller's default for a missing or empty key.
QString ServiceSetting(const QString& serviceFile, const QString& key, const QString& fallback = QString());

QString StoredName(const QString& displayName);
QString DisplayName(const QString& storedName);
QString ServiceFilePath(const QString& presetsFolder, const QString& displayName);

// A service as the editor writes it. A row without a field writes no F key (the file keeps what it had), and a
// phone row without a phone format writes no PhFormat key.
struct ServiceDefinition {
    QString name; // display name
    QString url;
    int base = ServiceBase::None;
    QString countryFile;
    QString defaultCountry;
    std::optional<QString> encoding; // the Encoding key; none: not written, so an edited file keeps its own
    std::array<std::optional<int>, kFieldRows> fields{};
    std::array<std::optional<QString>, kFieldRows> phoneFormats; // written only for rows whose field is PhoneNumbers
    std::array<QString, kFieldRows> variables;
    std::array<QString, kCustomRows> labels{QStringLiteral("Custom1"), QStringLiteral("Custom2"),
                                            QStringLiteral("Custom3")};
};

// Reads every key with the readers' defaults.
ServiceDefinition ReadServiceDefinition(const QString& path);

// Creates the file afresh, replacing any file of the name, and writes every key in the documented order.
// Answers false when a key could not be written.
bool WriteNewService(const QString& path, const ServiceDefinition& service);

// Writes every key into the existing file without truncating it, so keys no longer written (a PhFormat of a row
// that is no longer a phone row) stay and do no harm. When the name changed, the file goes to its new name (the
// old name replaced by the new one in the file's own name) and the old one is deleted; `path` is then set to the
// new file. A file of the new name is replaced, as saving a new service of that name would. A file that cannot
// be read or written raises an error.
bool SaveEditedService(QString& path, const ServiceDefinition& service,
                       std::source_location at = std::source_location::current());

} // namespace corvalent
