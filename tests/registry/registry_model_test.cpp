#include "tests/registry/registry_model.h"
#include "tests/support/messages.h"

#include <random>

namespace {

using RegistryModel = test::Messages;

TEST_F(RegistryModel, AgreesWithTheRegistry)
{
    std::minstd_rand engine(12345);
    const auto random = [&engine](unsigned int limit) { return static_cast<unsigned int>(engine() % limit); };
    for (int turn = 0; turn < 12; ++turn) {
        test::RegistryBesideModel both(random, turn % 2 == 0);
        for (int step = 0; step < 3000; ++step) {
            ASSERT_STREQ(both.Step(), nullptr) << "turn " << turn << " step " << step;
        }
    }
}

} // namespace
