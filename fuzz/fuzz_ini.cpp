// The INI document on any bytes: parsing never fails, writing back what was read changes nothing, and a value
// written can be read back, whatever the file held around it.

#include "FuzzInput.h"
#include "services/IniDocument.h"

using namespace corvalent;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray input = fuzz::bytes(data, size);
    const IniDocument doc = IniDocument::parse(input);
    const QByteArray written = doc.serialize();
    if (IniDocument::parse(written).serialize() != written)
        fuzz::fail("serialize is not stable");

    // A key written into the file is found again: names and value of plain letters taken from the input.
    QString name;
    for (char c : input.left(12)) {
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'))
            name += QLatin1Char(c);
    }
    if (name.isEmpty())
        name = QStringLiteral("Key");
    IniDocument changed = IniDocument::parse(input);
    changed.setValue(QStringLiteral("Settings"), name, QStringLiteral("v") + name);
    const IniDocument reread = IniDocument::parse(changed.serialize());
    if (reread.value(QStringLiteral("Settings"), name) != QStringLiteral("v") + name)
        fuzz::fail("written value not read back", name);
    return 0;
}
