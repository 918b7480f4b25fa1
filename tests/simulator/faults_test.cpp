// How often a fault happens.

#include <gtest/gtest.h>

#include "simulator/bytes.h"
#include "simulator/faults.h"

namespace readers {
namespace {

TEST(FaultCounts, HappenAsOftenAsAsked) {
    const struct {
        const char* Words;
        const char* Happens;  // over six occasions; "!" when it cannot be armed
    } cases[] = {
        {"checksum x2 after1", "-xx---"},
        {"checksum always", "xxxxxx"},
        {"checksum always after4", "----xx"},
        {"checksum off", "------"},
        {"checksum 7", "!"},
        {"late soon", "!"},
        {"split 3 60", "x-----"},
        {"reply 04D", "!"},
    };
    for (const auto& test : cases) {
        const auto words = WordsOf(test.Words);
        FaultSet faults;
        std::string problem;
        std::string happens;
        if (!faults.Arm(*FindFault(words.front()), std::span(words).subspan(1), problem)) {
            happens = "!";
            EXPECT_NE(problem, "");
        }
        for (int i = 0; i < 6 && happens != "!"; ++i) {
            happens += faults.Take(words.front()) ? 'x' : '-';
        }
        EXPECT_EQ(happens, test.Happens) << test.Words;
    }
}

}  // namespace
}  // namespace readers
