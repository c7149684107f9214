#include "services/IniCache.h"

#include <QFile>
#include <QHash>

#include <chrono>
#include <filesystem>
#include <system_error>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace corvalent {

namespace fs = std::filesystem;

namespace {

constexpr int kMaxEntries = 64;
// File systems stamp modification times with a coarse clock; a file whose stamp is this close to the moment it
// was parsed may change again without its stamp or size moving.
constexpr std::int64_t kRacyWindowNs = 2'000'000'000;

// What identifies one version of a file: a file replaced by rename gets a new inode, a file written in place a new
// size or modification time.
struct Stamp {
    std::uintmax_t size = 0;
    std::int64_t modifiedNs = 0;
    std::uint64_t inode = 0;
    bool operator==(const Stamp&) const = default;
};

std::int64_t nowNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

bool stampOf(const QString& path, Stamp& stamp)
{
#ifdef Q_OS_UNIX
    // One stat call: a cached read costs little more than this.
    struct stat st {};
    if (::stat(QFile::encodeName(path).constData(), &st) != 0 || !S_ISREG(st.st_mode))
        return false;
    stamp.size = std::uintmax_t(st.st_size);
    stamp.modifiedNs = std::int64_t(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    stamp.inode = std::uint64_t(st.st_ino);
    return true;
#else
    std::error_code ec;
    const fs::path p = fs::path(path.toStdU16String());
    if (!fs::is_regular_file(p, ec))
        return false;
    stamp.size = fs::file_size(p, ec);
    if (ec)
        return false;
    const auto modified = fs::last_write_time(p, ec);
    if (ec)
        return false;
    stamp.modifiedNs = std::chrono::duration_cast<std::chrono::nanoseconds>(
                           std::chrono::clock_cast<std::chrono::system_clock>(modified).time_since_epoch())
                           .count();
    return true;
#endif
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

    const bool racy = nowNs() - stamp.modifiedNs < kRacyWindowNs;
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
