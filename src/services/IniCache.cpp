#include "services/IniCache.h"

#include <QFile>
#include <QHash>

#include <chrono>
#include <filesystem>
#include <system_error>

namespace corvalent {

namespace fs = std::filesystem;

namespace {

constexpr int kMaxEntries = 64;
// File systems stamp modification times with a coarse clock; a file whose stamp is this close to the moment it
// was parsed may change again without its stamp or size moving.
constexpr auto kRacyWindow = std::chrono::seconds(2);

struct Stamp {
    std::uintmax_t size = 0;
    fs::file_time_type modified;
    bool operator==(const Stamp&) const = default;
};

bool stampOf(const QString& path, Stamp& stamp)
{
    std::error_code ec;
    const fs::path p = fs::path(path.toStdU16String());
    if (!fs::is_regular_file(p, ec))
        return false;
    stamp.size = fs::file_size(p, ec);
    if (ec)
        return false;
    stamp.modified = fs::last_write_time(p, ec);
    return !ec;
}

} // namespace

struct IniCache::Impl {
    struct Entry {
        Stamp stamp;
        bool racy = false;
        QByteArray bytes; // kept only for racy entries
        std::shared_ptr<const IniDocument> doc;
        quint64 lastUse = 0;
    };
    QHash<QString, Entry> entries;
    quint64 clock = 0;

    void evictIfFull()
    {
        if (entries.size() < kMaxEntries)
            return;
        auto oldest = entries.begin();
        for (auto it = entries.begin(); it != entries.end(); ++it) {
            if (it->lastUse < oldest->lastUse)
                oldest = it;
        }
        entries.erase(oldest);
    }
};

IniCache::IniCache() : d(std::make_unique<Impl>()) {}
IniCache::~IniCache() = default;

IniCache& IniCache::instance()
{
    static IniCache cache;
    return cache;
}

std::shared_ptr<const IniDocument> IniCache::load(const QString& path)
{
    Stamp stamp;
    if (!stampOf(path, stamp)) {
        d->entries.remove(path);
        return nullptr;
    }

    auto it = d->entries.find(path);
    if (it != d->entries.end() && it->stamp == stamp && !it->racy) {
        it->lastUse = ++d->clock;
        return it->doc;
    }

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        d->entries.remove(path);
        return nullptr;
    }
    const QByteArray bytes = file.readAll();
    file.close();

    const bool racy = fs::file_time_type::clock::now() - stamp.modified < kRacyWindow;
    if (it != d->entries.end() && it->stamp == stamp && it->bytes == bytes) {
        it->racy = racy;
        if (!racy)
            it->bytes.clear();
        it->lastUse = ++d->clock;
        return it->doc;
    }

    ++m_parses;
    auto doc = std::make_shared<const IniDocument>(IniDocument::parse(bytes));
    if (it == d->entries.end()) {
        d->evictIfFull();
        it = d->entries.insert(path, {});
    }
    it->stamp = stamp;
    it->racy = racy;
    it->bytes = racy ? bytes : QByteArray();
    it->doc = doc;
    it->lastUse = ++d->clock;
    return doc;
}

void IniCache::invalidate(const QString& path)
{
    d->entries.remove(path);
}

void IniCache::clear()
{
    d->entries.clear();
}

} // namespace corvalent
