#include "modeler/modelerexception.h"
#include "modeler/value.h"
#include "modeler/value/vmap.h"
#include "modeler/value/vmapiterator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::string messageOf(void (*f)()) {
    try {
        f();
    } catch (const ModelerException& e) {
        return e.getExplanation();
    }
    return "no error";
}

// Keys and values in iteration order, as text.
std::string walk(VMap* m) {
    std::string out;
    VMapIterator it(m);
    while (it.next()) out += it.getKey().toString() + "=" + it.getValue().toString() + " ";
    return out;
}

}  // namespace

TEST(Value, IsSixteenBytes) { EXPECT_EQ(sizeof(Value), 16u); }

TEST(Value, KindsAndTests) {
    Value nil, i(42LL), b(true), s("abc");
    EXPECT_TRUE(nil.isVoid());
    EXPECT_TRUE(nil.isBuiltin());
    EXPECT_FALSE(nil.isRef());
    EXPECT_TRUE(i.isInt());
    EXPECT_FALSE(i.isBool());
    EXPECT_TRUE(b.isBool());
    EXPECT_EQ(b.asInt(), 1);
    EXPECT_TRUE(s.isString());
    EXPECT_TRUE(s.isRef());
    EXPECT_EQ(RefTypes::T_MAP->getName(), "map");
    EXPECT_EQ(RefTypes::T_FILE->getName(), "file");
}

TEST(Value, SharedReferencesAreCounted) {
    VMap* m = new VMap();
    {
        Value a(m);
        Value b = a;
        EXPECT_EQ(m->getRefCount(), 2u);
        m->set(1, Value(5));
        EXPECT_EQ(static_cast<VMap*>(b.getReference())->get(1).asInt(), 5);
        b = Value(3);
        EXPECT_EQ(m->getRefCount(), 1u);
        Value c(std::move(a));
        EXPECT_TRUE(a.isVoid());
        EXPECT_EQ(m->getRefCount(), 1u);
    }
}

TEST(Value, IntegerArithmeticTruncatesAndWraps) {
    EXPECT_EQ(Value(7).div(nullptr, Value(-2)).asInt(), -3);
    EXPECT_EQ(Value(7).mod(nullptr, Value(-2)).asInt(), 1);
    EXPECT_EQ(Value(-7).mod(nullptr, Value(2)).asInt(), -1);
    EXPECT_EQ(Value(INT64_MAX).add(nullptr, Value(1)).asInt(), INT64_MIN);
    EXPECT_EQ(Value(INT64_MIN).div(nullptr, Value(-1)).asInt(), INT64_MIN);
    EXPECT_EQ(Value(INT64_MIN).mod(nullptr, Value(-1)).asInt(), 0);
    EXPECT_EQ(Value(INT64_MIN).opp(nullptr).asInt(), INT64_MIN);
    EXPECT_EQ(messageOf([] { Value(1).div(nullptr, Value(0)); }), "Division by zero.");
    EXPECT_EQ(messageOf([] { Value(1).mod(nullptr, Value(0)); }), "Division by zero.");
}

TEST(Value, DispatchTriesBothSidesThenFails) {
    EXPECT_EQ(Value("a").add(nullptr, Value(1)).asString(), "a1");
    EXPECT_EQ(Value(1).add(nullptr, Value("a")).asString(), "1a");
    EXPECT_EQ(Value(Value()).add(nullptr, Value("x")).asString(), "nilx");
    EXPECT_EQ(Value("ab").lt(nullptr, Value("b")).asInt(), 1);
    EXPECT_EQ(messageOf([] { Value("a").lt(nullptr, Value(1)); }),
              "Cannot apply '<' operator between types 'string' and 'int'.");
    EXPECT_EQ(messageOf([] { Value().add(nullptr, Value(1)); }),
              "Cannot apply '+' operator between types 'nil' and 'int'.");
    EXPECT_EQ(messageOf([] { Value("a").opp(nullptr); }),
              "Cannot apply '-' operator on type 'string'.");
    EXPECT_EQ(messageOf([] { Value(3).index(nullptr, Value(0)); }),
              "Cannot apply '[]' operator on type 'int'.");
    EXPECT_EQ(Value().eq(nullptr, Value()).asInt(), 1);
    EXPECT_EQ(Value().eq(nullptr, Value(0)).asInt(), 0);
    EXPECT_EQ(Value(0).neq(nullptr, Value()).asInt(), 1);
}

TEST(Value, BooleanCasts) {
    EXPECT_EQ(Value(1).band(nullptr, Value(0)).asInt(), 0);
    EXPECT_EQ(Value(0).bor(nullptr, Value(1)).asInt(), 1);
    EXPECT_EQ(Value(0).bnot(nullptr).asInt(), 1);
    EXPECT_EQ(messageOf([] { Value(2).band(nullptr, Value(1)); }),
              "Cannot cast 'int' to 'boolean'.");
    EXPECT_EQ(messageOf([] { Value("x").castToBool(); }), "Cannot cast 'string' to 'boolean'.");
    EXPECT_EQ(messageOf([] { Value(2).ternary(nullptr, Value(1), Value(2)); }),
              "Cannot cast 'int' to 'boolean'.");
    EXPECT_EQ(messageOf([] { Value(1).checkType(RefTypes::T_MAP); }),
              "Cannot cast 'int' to 'map'.");
}

TEST(VMap, DenseSlotsTreesAndAppend) {
    VMap* m = new VMap();
    Value hold(m);
    m->add(Value(10));
    m->add(Value(11));
    m->add(Value(12));
    EXPECT_EQ(walk(m), "0=10 1=11 2=12 ");
    m->set(10, Value(1));
    m->add(Value(2));
    EXPECT_EQ(m->get(11).asInt(), 2);
    m->set(Value("2"), Value(3));
    m->set(-5, Value(4));
    EXPECT_EQ(m->nextIntKey(), 12);
    m->set(100, Value(5));
    EXPECT_EQ(m->size(), 8u);
    EXPECT_EQ(walk(m), "-5=4 0=10 1=11 2=12 10=1 11=2 100=5 2=3 ");
    m->unset(1);
    m->set(0, Value());  // storing nil removes the key
    EXPECT_FALSE(m->contains(0));
    EXPECT_EQ(m->size(), 6u);
    EXPECT_TRUE(m->get(1).isVoid());
    EXPECT_EQ(messageOf([] {
                  VMap* bad = new VMap();
                  Value keep(bad);
                  bad->set(Value(keep), Value(1));
              }),
              "Only types 'string' and 'int' are allowed for keys. Type provided : 'map'.");
}

TEST(VMap, KeysBeyondTheDenseSlotsMoveInWhenContiguous) {
    VMap* m = new VMap();
    Value hold(m);
    for (int k = 40; k >= 0; --k) m->set(k, Value(k));
    EXPECT_EQ(m->size(), 41u);
    EXPECT_EQ(m->nextIntKey(), 41);
    std::string expected;
    for (int k = 0; k <= 40; ++k) expected += std::to_string(k) + "=" + std::to_string(k) + " ";
    EXPECT_EQ(walk(m), expected);
}

TEST(VMap, TextForm) {
    VMap* m = new VMap();
    Value hold(m);
    EXPECT_EQ(hold.toString(), "[ ]");
    m->set(1, Value(2));
    EXPECT_EQ(hold.toString(), "[  1 => 2 ]");
    m->set(std::string("k"), Value("v"));
    EXPECT_EQ(hold.toString(), "[  1 => 2  k => v ]");
}

TEST(VMap, SelfContainingMapFailsToPrintInsteadOfOverflowing) {
    VMap* m = new VMap();
    Value hold(m);
    m->set(0, hold);
    EXPECT_THROW(hold.toString(), ModelerException);
    m->clear();  // breaks the cycle
}

TEST(VMapIterator, ClearDuringIterationFailsAtTheNextStep) {
    VMap* m = new VMap();
    Value hold(m);
    m->add(Value(1));
    m->add(Value(2));
    VMapIterator it(m);
    ASSERT_TRUE(it.next());
    m->clear();
    try {
        it.next();
        FAIL();
    } catch (const ModelerException& e) {
        EXPECT_EQ(e.getExplanation(), "Cannot iterate on a modified map");
    }
}

TEST(VMapIterator, RemovingTheCurrentKeyIsSafe) {
    VMap* m = new VMap();
    Value hold(m);
    for (int k : {-3, -1, 50, 60}) m->set(k, Value(k));
    m->set(std::string("a"), Value(1));
    m->set(std::string("b"), Value(2));
    std::vector<std::string> seen;
    VMapIterator it(m);
    while (it.next()) {
        seen.push_back(it.getKey().toString());
        m->unset(it.getKey());
    }
    EXPECT_EQ(seen, (std::vector<std::string>{"-3", "-1", "50", "60", "a", "b"}));
    EXPECT_EQ(m->size(), 0u);
}

TEST(Reference, LongChainsAreReleasedWithoutDeepRecursion) {
    Value head(new VMap());
    Value current = head;
    for (int i = 0; i < 1000000; ++i) {
        Value next(new VMap());
        static_cast<VMap*>(current.getReference())->set(0, next);
        current = next;
    }
    current = Value();
    head = Value();  // would overflow the stack if each level recursed
    SUCCEED();
}

TEST(VMap, AppendAfterNegativeKeysOnly) {
    VMap* m = new VMap();
    Value hold(m);
    m->set(-3, Value(1));
    m->add(Value(2));
    EXPECT_EQ(walk(m), "-3=1 -2=2 ");
    m->set(std::string("s"), Value(3));
    EXPECT_EQ(m->get(std::string("s")).asInt(), 3);
}
