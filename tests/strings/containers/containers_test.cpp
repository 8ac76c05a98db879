// The array, the map with its key, the set and the counted pointer.

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <string>

#include "support/thrown.h"
#include "tarnlib/refcount.h"
#include "tarnlib/siarray.h"
#include "tarnlib/simap.h"
#include "tarnlib/siset.h"

using namespace TarnLibA500;

using NoCaseMap = SIMap<SMapStringCaseInsensitive, SAnsiString>;

TEST(Array, EditsByIndex) {
    SIArray<SAnsiString> a;
    a.Add("a");
    for (int i = 0; i < 2; ++i) a.Add(a[0]);  // the element moves while it is added
    EXPECT_TRUE(a.Add("b") == 3 && a.Append(a) == 4);
    a.RemoveAt(1, 5);
    EXPECT_EQ(a.Append(SIArray<SAnsiString>(a)), 3U);
    SAnsiString all;
    for (const SAnsiString& word : a) all += word;
    EXPECT_TRUE(all == "aabaab" && sizeof a == 16);
}

TEST(Array, GrowsInStepsOfAtMost4096) {
    using Case = std::array<std::uint32_t, 4>;
    for (const auto& [size, newSize, growBy, capacity] :
         {Case{10000, 10000, 100000, 14096}, Case{10000, 14096, 100000, 14096}, Case{100, 101, 100000, 200},
          Case{100, 105, 30, 130}, Case{100, 100, 0, 100}, Case{100, 99, 50, 100}}) {
        SIArray<int> array;
        array.SetSize(size);
        array.SetSize(newSize, growBy);
        const int* const data = array.Data();
        array.SetSize(capacity);
        EXPECT_EQ(array.Data(), data) << growBy;  // it fitted
        array.SetSize(capacity + 1);
        EXPECT_NE(array.Data(), data) << growBy;  // and not one more
    }
    EXPECT_EQ(tarntest::WhatOf<std::length_error>([] { SIArray<int>().SetSize(0xFFFFFFFF, 4); }),
              "vector<T> too long");
}

TEST(Map, OrdersByLengthAndIgnoresCase) {
    NoCaseMap map, other;
    for (const char* key : {"zz", "aaa", "B", "zzzz", "AB", "a", "aa", ""}) map.Insert(key, key);
    other.Insert("b", "new");
    map.Insert(other);
    map.SetAt("ZZ", "newer");
    SAnsiString all;
    for (const auto& [key, value] : map) all += key.GetString() + "=" + value + " ";
    EXPECT_EQ(all, "= a=a B=new aa=aa AB=AB zz=newer aaa=aaa zzzz=zzzz ");
    SAnsiString value("kept");
    EXPECT_TRUE(!map.Lookup("c", value) && value == "kept" && map.Lookup("aB", value) && value == "AB");
    EXPECT_TRUE(map.Contains("ZZZZ") && !map.Contains("zzz"));
    // By a part of a text, as short and as long as it is.
    const std::string line = "zzzz=" + std::string(300, 'K');
    map.Insert(line.c_str() + 5, "long");
    EXPECT_TRUE(map.Lookup("aBx", 2, value) && value == "AB" && map.Find("", 0).GetValue() == "");
    EXPECT_TRUE(map.Contains(line.c_str(), 4) && !map.Contains(line.c_str(), 5) && !map.Contains("zzz", 3));
    EXPECT_TRUE(map.Contains(line.c_str() + 5, 300) && !map.Lookup(line.c_str() + 5, 299, value));
    EXPECT_TRUE(map.RemoveKey(line.c_str() + 5));
    SIMap<SAnsiString, int> exact;
    exact.Insert("key", 1);
    EXPECT_TRUE(exact.Contains("keys", 3) && !exact.Contains("KEY", 3) &&
                exact.Find("key", 2) == exact.End());
    EXPECT_TRUE(map.RemoveKey("Ab") && !map.RemoveKey("Ab") && map.GetCount() == 7);
}

TEST(Map, IteratesBothWays) {
    NoCaseMap map;
    EXPECT_TRUE(map.GetFirst() == map.End() && map.GetLast() == map.End() && map.IsEmpty());
    for (const char* key : {"a", "c", "e"}) map.Insert(key, key);
    NoCaseMap::Iterator i = map.BeginAt("B");
    EXPECT_TRUE(i.GetKey().GetString() == "c" && i == map.Find("C") && map.BeginAt("f") == map.End());
    i.GetValue() = "changed";
    EXPECT_TRUE((--i)->second == "a" && i == map.GetIterator() && ++ ++ ++i == map.End());
    const NoCaseMap::ConstIterator fixed = map.Find("c");
    EXPECT_TRUE(fixed == std::as_const(map).BeginAt("C") && (*fixed).second == "changed");
}

TEST(Set, KeepsEveryElementOnceInOrder) {
    SISet<SAnsiString> set;
    EXPECT_TRUE(set.Insert("b") && set.Insert("a") && !set.Insert("b") && set.Insert("B"));
    EXPECT_TRUE(*set.Begin() == "B" && set.Remove("B") && !set.Remove("B") && !set.Contains("A"));
}

TEST(CountedPointer, DeletesWithTheLastHolder) {
    static int alive = 0;
    struct Counted : CRefCount {
        Counted() { ++alive; }
        ~Counted() override { --alive; }
    };
    CRefPtr<Counted> first(new Counted), second(new Counted);
    CRefPtr<CRefCount> base(first);
    *first = *second;
    CRefPtr<Counted> moved(std::move(first));
    moved = *&moved;
    EXPECT_TRUE(!first && moved->GetRefCount() == 2 && second->GetRefCount() == 1 && moved != second);
    base = second = nullptr;
    EXPECT_TRUE(alive == 1 && (moved = nullptr, alive == 0));
}
