#include "common/Windows1252.h"

namespace corvalent::Windows1252 {

namespace {

// Bytes 0x80 to 0x9F. The five bytes the code page leaves undefined map to the C1 controls of the same value,
// as the system's own conversion does, so that every byte survives a round trip.
constexpr char16_t kHigh[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

int encodeOne(char16_t u)
{
    if (u < 0x80 || (u >= 0xA0 && u <= 0xFF))
        return u;
    for (int i = 0; i < 32; ++i) {
        if (kHigh[i] == u)
            return 0x80 + i;
    }
    return -1;
}

} // namespace

QChar character(int code)
{
    code &= 0xFF;
    if (code >= 0x80 && code < 0xA0)
        return QChar(kHigh[code - 0x80]);
    return QChar(char16_t(code));
}

int code(QChar c)
{
    const int b = encodeOne(c.unicode());
    return b < 0 ? '?' : b;
}

QString decode(const QByteArray& bytes)
{
    QString text;
    text.reserve(bytes.size());
    for (char b : bytes)
        text.append(character(static_cast<unsigned char>(b)));
    return text;
}

QByteArray encode(const QString& text, bool* lossless)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    bool all = true;
    for (QChar c : text) {
        const int b = encodeOne(c.unicode());
        if (b < 0) {
            all = false;
            bytes.append('?');
        } else {
            bytes.append(char(b));
        }
    }
    if (lossless)
        *lossless = all;
    return bytes;
}

bool canEncode(const QString& text)
{
    for (QChar c : text) {
        if (encodeOne(c.unicode()) < 0)
            return false;
    }
    return true;
}

} // namespace corvalent::Windows1252
