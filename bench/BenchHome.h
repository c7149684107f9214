#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <chrono>
#include <filesystem>

// A private program folder for a benchmark run, with a service file of ten rows like the shipped ones.
struct BenchHome {
    QTemporaryDir dir;
    QString service;

    BenchHome()
    {
        qputenv("CORVALENT_HOME", QFile::encodeName(dir.path()));
        service = dir.filePath(QStringLiteral("Ten rows.isf"));
        QByteArray text = "[Settings]\r\nName=Ten rows\r\nURL=www.example.org/find.asp?lang=en\r\nBase=0\r\n"
                          "CountryFile=Countries.ini\r\nDefaultCountry=CA\r\n";
        const int fields[10] = {26, 25, 27, 30, 31, 32, 33, 35, 37, 0};
        for (int row = 0; row < 10; ++row)
            text += "F" + QByteArray::number(row) + "=" + QByteArray::number(fields[row]) + "\r\n";
        for (int row = 0; row < 10; ++row)
            text += "V" + QByteArray::number(row) + "=&var" + QByteArray::number(row) + "\r\n";
        text += "L7=Phone\r\nL8=Home phone\r\nL9=Notes\r\n";
        write(service, text);

        QByteArray countries = "[Countries]\r\n";
        for (int i = 0; i < 200; ++i)
            countries += "Country " + QByteArray::number(i) + "=C" + QByteArray::number(i) + "\r\n";
        countries += "Canada=CA\r\n";
        write(dir.filePath(QStringLiteral("Countries.ini")), countries);
        write(dir.filePath(QStringLiteral("Settings.ini")), "[Buttons]\r\n1=Ten rows\r\n");
        age(service);
        age(dir.filePath(QStringLiteral("Countries.ini")));
    }

    // Puts the service in the Presets folder, where the add-on's first button finds it (Settings.ini names it), so
    // that the add-on starts with it pressed. Answers the file's path.
    QString pressService()
    {
        const QString pressed = dir.filePath(QStringLiteral("Presets/Ten rows.isf"));
        if (!QDir(dir.path()).mkpath(QStringLiteral("Presets")) || !QFile::copy(service, pressed))
            qFatal("cannot write %s", qPrintable(pressed));
        age(pressed);
        return pressed;
    }

    // Files the user wrote a while ago, as they are when GO is pressed; a file written a moment ago is compared
    // byte for byte on every read because its timestamp cannot yet be trusted.
    static void age(const QString& path)
    {
        const std::filesystem::path p(path.toStdString());
        std::filesystem::last_write_time(p, std::filesystem::last_write_time(p) - std::chrono::hours(1));
    }

    static void write(const QString& path, const QByteArray& bytes)
    {
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly) || f.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(path));
    }
};
