// The seam: the system's service until an override is installed, nested
// overrides restored in turn.
#include <gtest/gtest.h>

#include "common/Seam.h"

namespace {

struct Greeter {
    virtual ~Greeter() = default;
    virtual const char* greet() = 0;
};

struct Fixed : Greeter {
    explicit Fixed(const char* text) : text(text) {}
    const char* greet() override { return text; }
    const char* text;
};

}  // namespace

template <>
Greeter& Seam<Greeter>::systemDefault()
{
    static Fixed system("system");
    return system;
}

namespace {

TEST(Seam, OverridesNestAndRestoreTheServiceBefore)
{
    EXPECT_STREQ(Seam<Greeter>::get().greet(), "system");
    Fixed outer("outer"), inner("inner");
    {
        Seam<Greeter>::Override first(outer);
        EXPECT_STREQ(Seam<Greeter>::get().greet(), "outer");
        {
            Seam<Greeter>::Override second(inner);
            EXPECT_STREQ(Seam<Greeter>::get().greet(), "inner");
        }
        EXPECT_STREQ(Seam<Greeter>::get().greet(), "outer");
    }
    EXPECT_STREQ(Seam<Greeter>::get().greet(), "system");
}

}  // namespace
