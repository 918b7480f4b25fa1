#include <gtest/gtest.h>

#include "tests/e2e/error_box.h"

int main(int count, char** arguments) {
    if (count == 3 && std::string(arguments[1]) == ShowBoxRole) {
        return ShowModelBox(arguments[2]);
    }
    testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}
