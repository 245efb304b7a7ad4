#include <gtest/gtest.h>

#include "runtime/Integer.h"

using rt::Integer;
using rt::Long;

namespace {

int errorOf(auto &&f)
{
    try {
        f();
    } catch (const rt::RuntimeError &e) {
        return e.number();
    }
    return 0;
}

} // namespace

TEST(Integer, ConstructionAtTheEdges)
{
    EXPECT_EQ(Integer(32767).value(), 32767);
    EXPECT_EQ(Integer(-32768).value(), -32768);
    EXPECT_EQ(errorOf([] { Integer(32768); }), 6);
    EXPECT_EQ(errorOf([] { Integer(-32769); }), 6);
}

TEST(Integer, ArithmeticOverflowIsError6)
{
    const Integer max(32767), min(-32768);
    EXPECT_EQ(errorOf([&] { (void)(max + Integer(1)); }), 6);
    EXPECT_EQ(errorOf([&] { (void)(min - Integer(1)); }), 6);
    EXPECT_EQ(errorOf([&] { (void)(-min); }), 6);
    EXPECT_EQ(errorOf([&] { (void)(Integer(256) * Integer(128)); }), 6);
    EXPECT_EQ((Integer(256) * Integer(127)).value(), 32512);
    EXPECT_EQ((max + Integer(-1)).value(), 32766);
    EXPECT_EQ((-max).value(), -32767);

    Integer counter(32766);
    counter += 1;
    EXPECT_EQ(counter.value(), 32767);
    EXPECT_EQ(errorOf([&] { counter += 1; }), 6);
    EXPECT_EQ(counter.value(), 32767) << "a failed assignment leaves the old value";
}

TEST(Integer, ErrorCarriesDescription)
{
    try {
        (void)Integer(40000);
        FAIL() << "no error raised";
    } catch (const rt::RuntimeError &e) {
        EXPECT_EQ(e.number(), 6);
        EXPECT_EQ(e.description(), "Overflow");
    }
}

TEST(Integer, TruthValues)
{
    EXPECT_EQ(rt::truth(true).value(), -1);
    EXPECT_EQ(rt::truth(false).value(), 0);
    EXPECT_EQ(rt::truth(true).unsignedValue(), 65535);
    EXPECT_EQ(Integer(-32768).unsignedValue(), 32768);
    EXPECT_EQ(Integer(1).unsignedValue(), 1);
    EXPECT_TRUE(Integer(1).isTrue());
    EXPECT_FALSE(Integer(0).isTrue());
}

TEST(Integer, Comparison)
{
    EXPECT_TRUE(Integer(-1) < Integer(0));
    EXPECT_TRUE(Integer(5) == Integer(5));
    EXPECT_FALSE(Integer(5) == Integer(-5));
}

TEST(Long, ConstructionAtTheEdges)
{
    EXPECT_EQ(Long(2147483647LL).value(), 2147483647);
    EXPECT_EQ(Long(-2147483648LL).value(), -2147483647 - 1);
    EXPECT_EQ(errorOf([] { Long(2147483648LL); }), 6);
    EXPECT_EQ(errorOf([] { Long(-2147483649LL); }), 6);
}

TEST(Long, ArithmeticOverflowIsError6)
{
    const Long max(2147483647LL), min(-2147483648LL);
    EXPECT_EQ(errorOf([&] { (void)(max + Long(1)); }), 6);
    EXPECT_EQ(errorOf([&] { (void)(min - Long(1)); }), 6);
    EXPECT_EQ(errorOf([&] { (void)(-min); }), 6);
    EXPECT_EQ(errorOf([&] { (void)(Long(65536) * Long(32768)); }), 6);
    EXPECT_EQ((Long(65536) * Long(32767)).value(), 2147418112);
    // Values an Integer can't hold are fine in a Long.
    EXPECT_EQ((Long(Integer(32767)) + Long(1)).value(), 32768);
}
