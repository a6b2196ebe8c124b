#include "support/Platform.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <map>

namespace vykeltest {
static std::map<std::string, Role>& roles() {
    static std::map<std::string, Role> known;
    return known;
}
NamedRole::NamedRole(const char* name, Role role) {
    roles()[name] = role;
}
} // namespace vykeltest

int main(int argc, char** argv) {
    const char* const role = std::getenv("VYKEL_TEST_ROLE");
    if (role != nullptr && *role != '\0')
        return vykeltest::roles().at(role)();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
