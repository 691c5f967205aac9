// Every interface that the toolchain's COM and DirectShow headers declare, and this product's own.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "win/platform.h"

namespace test_support {

struct KnownInterface {
    std::string name;
    IID iid;
};

[[nodiscard]] const std::vector<KnownInterface>& KnownInterfaces();

// The names of those that the object answers. A refusal that leaves a pointer behind, or an answer without one, is a
// failure.
[[nodiscard]] std::set<std::string> InterfacesOf(IUnknown& object);

} // namespace test_support
