#pragma once

#include "services/IniDocument.h"

#include <QString>
#include <memory>

namespace corvalent {

// Parsed INI files, kept while the file on disk stays the same (same size and modification time), so that the
// two dozen reads of one request do not parse the same file two dozen times. A file changed within the
// timestamp's granularity of its last parse is compared byte for byte before its parse is reused.
class IniCache {
public:
    static IniCache& instance();

    // The parsed file, or nullptr when it does not exist or cannot be read.
    std::shared_ptr<const IniDocument> load(const QString& path);

    // Forgets one file (after writing it) or all of them.
    void invalidate(const QString& path);
    void clear();

    int parses() const { return m_parses; } // how many times a file was actually parsed

private:
    IniCache();
    ~IniCache();
    struct Impl;
    std::unique_ptr<Impl> d;
    int m_parses = 0;
};

} // namespace corvalent
