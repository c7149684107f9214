#pragma once

// Shared by the fuzz targets: turning the fuzzer's bytes into the program's inputs, and failing loudly.

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdio>
#include <cstdlib>

namespace corvalent::fuzz {

inline QByteArray bytes(const uint8_t* data, size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), qsizetype(size));
}

// The text a user or a server could hand over: the bytes as UTF-8, invalid sequences replaced.
inline QString text(const QByteArray& b)
{
    return QString::fromUtf8(b);
}

// A broken promise of the code under test: the fuzzer records the input that led here.
[[noreturn]] inline void fail(const char* what, const QString& detail = QString())
{
    std::fprintf(stderr, "fuzz: %s %s\n", what, qPrintable(detail));
    std::abort();
}

} // namespace corvalent::fuzz
