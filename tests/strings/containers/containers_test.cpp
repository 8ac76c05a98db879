// The array, the map with its key, the set and the counted pointer.

#include <gtest/gtest.h>

#include <array>
#include <iterator>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/locale_scope.h"
#include "support/print_strings.h"
#include "support/thrown.h"
#include "tarnlib/refcount.h"
#include "tarnlib/shashmap.h"
#include "tarnlib/siarray.h"
#include "tarnlib/simap.h"
#include "tarnlib/siset.h"

using namespace TarnLibA500;

using NoCaseMap = SIMap<SMapStringCaseInsensitive, SAnsiString>;
using NoCase = SMapStringCaseInsensitive;

namespace {

// Texts of a few characters: as keys they are ordered as strings are, and are one in a map without an order where
// their lower case is.
void KeysFollowStrings(const std::vector<const char*>& characters) {
    std::mt19937 random(11);
    const auto text = [&] {
        SAnsiString made;
        for (unsigned left = random() % 7; left != 0; --left)
            made += characters[random() % characters.size()];
        return made;
    };
    for (int i = 0; i < 20'000; ++i) {
        const SAnsiString left = text(), right = text(), inside = right + "x";
        const std::uint32_t length = right.getLength();
        const bool isOfOneLength = left.getLength() == length;
        const int order = SMapOrder(NoCase(left), {inside.getString(), length});
        const int byLength = left.getLength() < length ? -1 : 1;
        ASSERT_EQ(order, isOfOneLength ? left.compareNoCase(right) : byLength)
            << left.getString() << " " << right.getString();
        ASSERT_EQ(NoCase(left) < NoCase(right), order < 0) << left.getString() << " " << right.getString();
        SIMap<NoCase, int> ordered;
        ordered.Insert(left, i);
        ASSERT_TRUE(ordered.Contains(right) == (order == 0) &&
                    (ordered.BeginAt(right) == ordered.End()) == (order < 0));
        SHashMap<NoCase, int> map;
        map.Insert(left, i);
        const bool isSame = isOfOneLength && SAnsiString(left).toLower() == SAnsiString(right).toLower();
        ASSERT_EQ(map.Contains(inside.getString(), length), isSame)
            << left.getString() << " " << right.getString();
    }
}

}  // namespace

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

TEST(Map, KeysFollowStringsInEveryPage) {
    for (const char* locale : {"C", tarntest::kLocale1252, "German_Germany.1252", "Danish_Denmark.1252"}) {
        const tarntest::LocaleScope scope(locale);
        KeysFollowStrings({"a", "A", "b", "B", "ss", "9", "-", "\xE4", "\xC4", "\xDF", "\x9F", "\xFF"});
    }
    const tarntest::LocaleScope scope(tarntest::kLocale932);
    KeysFollowStrings(
        {"a", "A", "\\", "-", "\xB1", "\x81\x7D", "\x82\x81", "\x82\x60", "\x83\x5C", "\x83\x7C"});
}

TEST(Utf8Map, KeysFollowStrings) {
    KeysFollowStrings({"a", "A", "k", "K", "\u212A", "\u00E9", "\u00C9", "\u2C65", "\u023A", "\U0001F600"});
}

TEST(HashMap, DoesWhatAMapDoes) {
    std::mt19937 random(5);
    std::map<std::string, int> model;
    SHashMap<SAnsiString, int> map;
    for (int i = 0; i < 5'000; ++i) {
        const std::string key = std::to_string(random() % 500);
        const bool isThere = model.contains(key);
        ASSERT_EQ(map.Contains((key + "0").c_str(), key.size()), isThere);
        if (random() % 3 == 0) {
            ASSERT_EQ(map.RemoveKey(key.c_str()), model.erase(key) != 0);
        } else if (isThere && random() % 2 == 0) {
            map.Find(key.c_str()).GetValue() = model[key] = i;
        } else {
            map.SetAt(key.c_str(), model[key] = i);
        }
    }
    int value = -1;
    EXPECT_TRUE(!map.Lookup("none", value) && !map.Lookup("none", 4, value) && value == -1);
    for (const auto& [key, expected] : model)
        EXPECT_TRUE(map.Lookup(key.c_str(), value) && value == expected);
    EXPECT_EQ(std::distance(map.begin(), map.end()), static_cast<std::ptrdiff_t>(model.size()));
    SHashMap<SAnsiString, int> other;
    other.Insert("new", 1);
    other.Insert(model.begin()->first.c_str(), -5);
    map.Merge(other);
    EXPECT_TRUE(other.IsEmpty() && map.GetCount() == model.size() + 1 && map.Lookup("new", value));
    EXPECT_EQ(map.Find(model.begin()->first.c_str()).GetValue(), -5);
    SHashMap<NoCase, int> noCase;
    noCase.Insert("Content-Type", 1);
    noCase.Insert("CONTENT-TYPE", 2);
    EXPECT_TRUE(noCase.GetCount() == 1 && noCase.GetFirst().GetKey().GetString() == "Content-Type");
    // Bytes that are no characters are the same as themselves only, and a zero byte is a character.
    EXPECT_TRUE(SHashSameNoCase("A\0B\xE4", "a\0b\xE4", 4) && !SHashSameNoCase("a\0b", "a\0c", 3));
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
