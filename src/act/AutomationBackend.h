#pragma once

#include "common/Automation.h"
#include "act/HostEvents.h"

#include <memory>
#include <source_location>

namespace corvalent {

// Where automation objects come from: the contact manager over the session bus, or (in tests) its object model
// in the same process. Later, COM on Windows.
class AutomationBackend {
public:
    virtual ~AutomationBackend() = default;

    // A new object of a ProgID; throws Error 429 when it cannot be created (the contact manager is not there).
    virtual AutomationPtr create(const QString& progId,
                                 std::source_location at = std::source_location::current()) = 0;

    // The contact manager's events.
    virtual HostEvents& events() = 0;

    // Which contact manager this is, by the name its user knows: what the add-on's texts call it.
    virtual QString hostName() const = 0;
};

} // namespace corvalent
