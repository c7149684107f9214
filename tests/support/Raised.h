#pragma once

#include "common/Error.h"

#include <QString>
#include <utility>

namespace corvalent::test {

// The error `call` raises; number 0 when it raises none.
template <typename Call>
Error raised(Call&& call)
{
    try {
        call();
    } catch (const Error& e) {
        return e;
    }
    return Error(0, QString());
}

// The same as number and description, for comparing with one expected pair.
template <typename Call>
std::pair<int, QString> raisedPair(Call&& call)
{
    const Error e = raised(std::forward<Call>(call));
    return {e.number(), e.description()};
}

} // namespace corvalent::test
