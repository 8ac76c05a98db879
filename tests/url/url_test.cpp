// Query strings, escaping, URLs and patterns by cases from files, in three kinds of code page.

#include <gtest/gtest.h>

#include <random>

#include "support/assert_recorder.h"
#include "support/calls.h"
#include "support/locale_scope.h"
#include "tarnlib/coburl.h"
#include "tarnlib/frsurl.h"
#include "tarnlib/siuri.h"
#include "tarnlib/squerystring.h"
#include "tarnlib/swebencode.h"

using namespace TarnLibA500;
using tarntest::Arguments;
using tarntest::YesNo;
using Codeset = MBCSCodesetConverter::ExplicitCodeset;
using Pairs = CNameValuePairs;

namespace {

SWCharString Wide(const SAnsiString& utf8) {
    SWCharString wide;
    wide.fromUTF8(utf8.getString(), utf8.getLength());
    return wide;
}

SAnsiString Narrow(const SWCharString& wide) {
    char utf8[200] = {};
    wide.toUTF8(utf8, sizeof utf8);
    return utf8;
}

Codeset CodesetOf(const SAnsiString& number) {  // 7: an enumeration of 0 to 5 holds no more
    return static_cast<Codeset>((number.getString()[0] - '0') & 7);
}

SAnsiString Appended(void (*append)(SAsciiString&, const SWCharString&),
                     void (*appendWide)(SWCharString&, const SWCharString&), const SAnsiString& text) {
    SAsciiString ascii;
    SWCharString wide;
    for (const SAnsiString& part : {SAnsiString("+"), text}) {
        append(ascii, Wide(part));
        appendWide(wide, Wide(part));
    }
    EXPECT_EQ(Narrow(wide), ascii.getString());
    return ascii.getString();
}

SAnsiString Tried(const Arguments& a) {
    SAnsiString target("as it was");
    bool decoded = false;
    if (!Pairs::tryURLStrDecode(target, a[0].getString(), a[0].getLength(), &decoded)) return "no, " + target;
    return decoded ? target : target + ", nothing";
}

SAnsiString AllPairs(const Arguments& a) {
    Pairs pairs(a[0]);
    SAnsiString all, name, value;
    while (pairs.HasMorePairs()) {
        a[1].isEmpty() ? pairs.Next(name, value) : pairs.Next(name, value, CodesetOf(a[1]));
        all += "[" + name + "][" + value + "]";
    }
    EXPECT_FALSE(pairs.Next(name, value));
    return all;
}

SAnsiString InMap(const Arguments& a) {
    CMapNameValuePair map;
    map.SetAt("old", "x");
    SAnsiString all(map.ParseParameter(a[0]) ? "" : "bad ");
    for (const auto& [name, value] : map) all += "[" + name.GetString() + "][" + value + "]";
    return all;
}

struct AnyUrl : CUrlBase {
    AnyUrl() : CUrlBase("p", "s", "x", "y") {}
    using CUrlBase::ParseAndSetUrl;
};

SAnsiString Base(const Arguments& a) {
    AnyUrl url;
    EXPECT_TRUE(url.ParseAndSetUrl(a[0]));
    const SAnsiString made = url.MakeURL();
    EXPECT_TRUE(url.ParseAndSetUrl(made) && url.MakeURL() == made);
    return "[" + url.GetProtocol() + "][" + url.GetServer() + "][" + url.GetPath() + "][" +
           url.GetQueryString() + "] " + made;
}

// An old URL that parses the text, or stays as it is; then directory and name.
SAnsiString Frs(const Arguments& a) {
    FRSUrl url("Old", "Dir/Name");
    try {
        url = a[0];
    } catch (const FRSUrlException& failure) {
        EXPECT_TRUE(failure.ErrCode() == FRSUrlException::frsInvalidUrl && failure.Url() == a[0]);
        EXPECT_EQ(url.MakeURL() + url.GetDir(), "frs://Old/dir/namedir/");
        return failure.toString();
    }
    if (!a[1].isEmpty()) url.SetDir(a[1]);
    if (!a[2].isEmpty()) url.SetFilename(a[2]);
    SAnsiString all;
    return all << url << " [" << url.GetPath() << "][" << url.GetDir() << "][" << url.GetFilename() << "]";
}

SAnsiString Object(const Arguments& a) {
    CObUrl url(a[0]);
    url.SetQueryString(a[1]);
    const SAnsiString made = url.MakeURL();
    EXPECT_EQ(CObUrl(made).MakeURL(), made);
    return made;
}

SAnsiString Split(const Arguments& a) {
    SAnsiString object("as it was"), rest;
    const char* const start = CObUrl::SplitFullURL(a[0], object, rest) ? "[" : "no [";
    return start + object + "][" + rest + "]";
}

// A property that is read from a text and set again, or the old value.
template <class T, class Set>
SAnsiString ReadAndSet(const SAnsiString& text, bool (CObUrl::*get)(const SAnsiStringCI&, T&) const, Set set,
                       T value) {
    CObUrl url;
    EXPECT_FALSE((url.*get)("P", value));
    url.SetPropString("p", text);
    const bool isRead = (url.*get)("P", value);
    (url.*set)("P", value);
    SAnsiString stored;
    EXPECT_TRUE(url.GetPropString("p", stored));
    return (isRead ? "" : "no, ") + stored;
}

SAnsiString Property(const Arguments& a) {
    SIArray<unsigned long> numbers;
    SIArray<SAnsiString> texts;
    numbers.Add(7);
    texts.Add("7&");
    const SDateTime date(2000, 1, 2, 3, 4, 5, 6, STimeZone::TZ_UTC());
    using U = CObUrl;
    using SetAscii = void (U::*)(const SAnsiStringCI&, const SAsciiString&);
    const std::map<std::string, std::function<SAnsiString(const SAnsiString&)>> types = {
        {"text",
         [](auto& t) {
             return ReadAndSet<SAsciiString, SetAscii>(t, &U::GetPropString, &U::SetPropString, "7");
         }},
        {"bool", [](auto& t) { return ReadAndSet(t, &U::GetPropBool, &U::SetPropBool, true); }},
        {"byte", [](auto& t) { return ReadAndSet<unsigned char>(t, &U::GetPropByte, &U::SetPropByte, 7); }},
        {"short", [](auto& t) { return ReadAndSet<short>(t, &U::GetPropShort, &U::SetPropShort, 7); }},
        {"ushort",
         [](auto& t) { return ReadAndSet<unsigned short>(t, &U::GetPropUShort, &U::SetPropUShort, 7); }},
        {"long", [](auto& t) { return ReadAndSet(t, &U::GetPropLong, &U::SetPropLong, 7L); }},
        {"ulong", [](auto& t) { return ReadAndSet(t, &U::GetPropULong, &U::SetPropULong, 7UL); }},
        {"dword", [](auto& t) { return ReadAndSet(t, &U::GetPropDWord, &U::SetPropDWord, 7UL); }},
        {"int64", [](auto& t) { return ReadAndSet(t, &U::GetPropInt64s, &U::SetPropInt64s, 7LL); }},
        {"double", [](auto& t) { return ReadAndSet(t, &U::GetPropDouble, &U::SetPropDouble, 7.5); }},
        {"date", [&](auto& t) { return ReadAndSet(t, &U::GetPropDateTime, &U::SetPropDateTime, date); }},
        {"dwords",
         [&](auto& t) { return ReadAndSet(t, &U::GetPropDWordArray, &U::SetPropDWordArray, numbers); }},
        {"texts",
         [&](auto& t) { return ReadAndSet(t, &U::GetPropStringArray, &U::SetPropStringArray, texts); }},
    };
    const auto type = types.find(a[0].getString());
    return type != types.end() ? type->second(a[1]) : SAnsiString("no type");
}

SAnsiString Component(const Arguments& a) {
    SAnsiString value("as it was");
    try {
        const bool found = SIUri(a[0]).getComponent(a[1], value);
        return (found ? "" : "no, ") + value;
    } catch (const SAnsiString& failure) {
        return failure;
    }
}

SAnsiString Inserted(const Arguments& a) {
    SIUri uri(a[0], a[1], a[2]);
    uri.insertComponent(a[3], a[4]);
    return uri.makeURI();
}

SAnsiString Like(const Arguments& a) {
    SQueryString pattern(a[0]);
    if (!pattern.parse()) return "fault at " + tarntest::Number(pattern.GetFaultPosition());
    return YesNo(SQueryString(pattern).like(a[1]));
}

SAnsiString Quoted(const Arguments& a) {
    SAnsiString text(a[0]);
    EXPECT_TRUE(SInfoQueryString::ValidateAStringValue(text));
    return text;
}

SAnsiString Concat(const Arguments& a) {
    Pairs pairs(a[0]);
    pairs.ConcatPairs(a[1]);
    return pairs.GetPairs();
}

using Call = SAnsiString (*)(const Arguments&);
const std::map<std::string, Call> kPlainCalls = {
    {"encode", [](const Arguments& a) { return Pairs::URLStrEncode(a[0]); }},
    {"encode wide", [](const Arguments& a) { return Narrow(Pairs::URLStrEncode(Wide(a[0]))); }},
    {"encode as",
     [](const Arguments& a) { return SWebEncode::URLEncode(a[0], CodesetOf(a[1]), a[2] != "no"); }},
    {"append",
     [](const Arguments& a) {
         return Appended(&Pairs::URLStrEncodeAppend, &Pairs::URLStrEncodeAppend, a[0]);
     }},
    {"append 3",
     [](const Arguments& a) {
         return Appended(&Pairs::URLStrEncodeAppend3, &Pairs::URLStrEncodeAppend3, a[0]);
     }},
    {"decode", [](const Arguments& a) { return SWebEncode::URLDecodeEx(a[0]); }},
    {"decode wide", [](const Arguments& a) { return Narrow(Pairs::URLStrDecode(Wide(a[0]))); }},
    {"decode as", [](const Arguments& a) { return Pairs::URLStrDecodeAndConvert(a[0], CodesetOf(a[1])); }},
    {"try", Tried},
    {"pairs", AllPairs},
    {"map", InMap},
    {"concat", Concat},
    {"html", [](const Arguments& a) { return SWebEncode::HTMLEncode(a[0]); }},
    {"nbsp", [](const Arguments& a) { return SWebEncode::HTMLNonBreakableSpace(a[0]); }},
    {"stippled", [](const Arguments& a) { return SWebEncode::HTMLNonBreakableSpaceStippled(a[0]); }},
    {"js", [](const Arguments& a) { return SWebEncode::JavaScriptEncode(a[0]); }},
    {"vbs", [](const Arguments& a) { return SWebEncode::VBScriptStringEncode(a[0]); }},
    {"base", Base},
    {"frs", Frs},
    {"is frs", [](const Arguments& a) { return YesNo(FRSUrl::IsFRSUrl(a[0])); }},
    {"original", [](const Arguments& a) { return FRSUrl::GetOriginalFilename(a[0]); }},
    {"object", Object},
    {"split", Split},
    {"property", Property},
    {"component", Component},
    {"insert", Inserted},
    {"like", Like},
    {"wild", [](const Arguments& a) { return YesNo(SQueryString::ContainsWildcards(a[0])); }},
    {"wrap", [](const Arguments& a) { return SQueryString::WrapWildCardCharsFromString(a[0]); }},
    {"quote", Quoted},
};

// Behind an answer stands what was last reported by assertion: the expression, and the message where there is one.
tarntest::Calls WatchedCalls() {
    tarntest::Calls watched;
    for (const auto& [name, call] : kPlainCalls) {
        watched[name] = [call = call](const Arguments& arguments) {
            const tarntest::AssertRecorder recorder;
            const SAnsiString answer = call(arguments);
            const std::string line = recorder.last();
            if (line.empty()) return answer;
            const std::size_t at = line.find("). (") + 4;
            const std::string what = line.substr(at, line.size() - at - 2);
            return SAnsiString(answer + " !" + what.substr(0, what.find(" : no message")).c_str());
        };
    }
    return watched;
}

// Each in three kinds of code page. The guarded heap uses no address twice as long as it can, and is slow from then on.
#ifdef TARN_GUARD_HEAP
constexpr int kInputs = 400, kPatterns = 2'000;
#else
constexpr int kInputs = 10'000, kPatterns = 100'000;
#endif

// A text of up to so many pieces of an alphabet.
std::string AnyText(std::mt19937& random, const std::vector<std::string>& alphabet, unsigned most) {
    std::string text;
    for (unsigned n = random() % (most + 1); n != 0; --n) text += alphabet[random() % alphabet.size()];
    return text;
}

SAnsiString Ansi(const std::string& text) {
    return {text.data(), static_cast<std::uint32_t>(text.size())};
}

std::vector<std::string> Characters(const std::string& bytes) {
    const SAnsiString text = Ansi(bytes);
    std::vector<std::string> characters;
    for (auto at = text.begin(); at != text.end();) {
        const char* const from = at.getPtr();
        ++at;
        characters.emplace_back(from, at.getPtr());
    }
    return characters;
}

// The grammar of patterns without a thought of speed: what is left of the pattern against what is left of the text.
using Left = std::vector<std::string>::const_iterator;

bool InClass(const std::vector<std::string>& inside, const std::string& c) {
    const bool negated = inside.size() > 1 && inside[0] == "^";
    const std::size_t first = negated ? 1 : 0;
    bool found = false;
    for (std::size_t i = first; i < inside.size(); ++i) {
        const auto number = [](std::string s) { return std::string(4 - s.size(), '\0') + s; };
        if (inside[i] == "-" && i != first && i + 1 != inside.size()) {
            const std::string one = number(inside[i - 1]), other = number(inside[i + 1]);
            found |= std::min(one, other) <= number(c) && number(c) <= std::max(one, other);
        } else {
            found |= inside[i] == c;
        }
    }
    return !inside.empty() && found != negated;
}

bool Matches(Left p, Left pEnd, Left t, Left tEnd) {
    if (p == pEnd) return t == tEnd;
    if (*p == "%") return Matches(p + 1, pEnd, t, tEnd) || (t != tEnd && Matches(p, pEnd, t + 1, tEnd));
    if (t == tEnd) return false;
    if (*p != "[") return (*p == "_" || *p == *t) && Matches(p + 1, pEnd, t + 1, tEnd);
    const Left closing = std::find(p, pEnd, "]");
    return InClass({p + 1, closing}, *t) && Matches(closing + 1, pEnd, t + 1, tEnd);
}

bool IsClosed(Left p, Left pEnd) {
    for (Left open; (open = std::find(p, pEnd, "[")) != pEnd; p = p + 1) {
        p = std::find(open, pEnd, "]");
        if (p == pEnd) return false;
    }
    return true;
}

void ExpectLikeTheGrammar(std::vector<std::string> alphabet) {
    std::mt19937 random(63);
    tarntest::AssertRecorder recorder;
    alphabet.insert(alphabet.end(), {"a", "a", "b", "b"});
    std::vector<std::string> signs(alphabet);
    signs.insert(signs.end(), {"%", "%", "%", "_", "[", "]", "]", "^", "-"});
    unsigned yes = 0;
    for (int i = 0; i < kPatterns; ++i, recorder.take()) {
        const std::string pattern = AnyText(random, signs, 9), text = AnyText(random, alphabet, 7);
        const auto p = Characters(pattern), t = Characters(text);
        SQueryString query(Ansi(pattern));
        const bool good = IsClosed(p.begin(), p.end());
        ASSERT_EQ(query.parse(), good) << pattern;
        const bool match = good && Matches(p.begin(), p.end(), t.begin(), t.end());
        ASSERT_EQ(query.like(Ansi(text)), match) << testing::PrintToString(std::pair(pattern, text));
        yes += match;
    }
    EXPECT_GT(yes, kPatterns / 50U);
}

// Every call takes anything; what is encoded comes back.
void ExpectNoSurprise(const std::vector<std::string>& alphabet) {
    std::mt19937 random(6263);
    std::vector<std::string> signs(alphabet);
    for (const char* sign : {"=",   "&",   "%",         "%4", "%u", "%u00", "41", "+", "?", "/", "\\",
                             "://", "frs", "osca:iiop", ",",  "{",  "}",    "[",  "]", "^", "-", "_",
                             "'",   "\"",  "<",         "\r", "\n", ".",    " ",  "a", "B", "9"})
        signs.push_back(sign);
    for (int byte = 0; byte < 256; byte += 15) signs.emplace_back(1, static_cast<char>(byte));
    for (int i = 0; i < kInputs; ++i) {
        const tarntest::AssertRecorder recorder;
        Arguments arguments(8);
        for (SAnsiString& argument : arguments) argument = Ansi(AnyText(random, signs, 14));
        for (const auto& [name, call] : kPlainCalls) call(arguments);
        const SAnsiString& text = arguments[0];
        ASSERT_EQ(Pairs::URLStrDecode(Pairs::URLStrEncode(text)), text);
        Pairs pairs(Pairs::Encode(text.getString(), "&", "", "=", nullptr));
        SAnsiString name, value;
        ASSERT_TRUE(pairs.Next(name, value) && value == "&" && name == text.getString());
        ASSERT_TRUE(pairs.Next(name, value) && value == "=" && name.isEmpty() && !pairs.HasMorePairs());
    }
}

const std::vector<std::string> kSingle = {"\xE9", "\xFF"};
const std::vector<std::string> k932 = {"\x83\x5C", "\x83\x5D", "\x83\x5B", "\x83", "\x81\x40", "\xB1"};
const std::vector<std::string> kUtf8 = {"\xC3\xA9", "\xE2\x82\xAC", "\xE2\x82", "\xAC", "\xF0\x9F\x98\x80"};

}  // namespace

TEST(UrlsAtRandom, LikeIsTheGrammar) {
    ExpectLikeTheGrammar(kSingle);
}

TEST(Utf8UrlsAtRandom, LikeIsTheGrammar) {
    ExpectLikeTheGrammar(kUtf8);
}

TEST(Cp932UrlsAtRandom, LikeIsTheGrammar) {
    const tarntest::LocaleScope locale(tarntest::kLocale932);
    ExpectLikeTheGrammar(k932);
}

TEST(UrlsAtRandom, NothingIsASurprise) {
    ExpectNoSurprise(kSingle);
}

TEST(Utf8UrlsAtRandom, NothingIsASurprise) {
    ExpectNoSurprise(kUtf8);
}

TEST(Cp932UrlsAtRandom, NothingIsASurprise) {
    const tarntest::LocaleScope locale(tarntest::kLocale932);
    ExpectNoSurprise(k932);
}

TEST(Urls, AnswerAsInTheFile) {
    tarntest::ExpectCalls("url/url_calls.txt", WatchedCalls());
}

TEST(Urls, AreTraced) {
    tarntest::AssertRecorder recorder(tarntest::kTracesToo);
    SAnsiString name, value;
    long number = 0;
    Pairs("a=1").Next(name, value);
    EXPECT_EQ(recorder.take("4 nvpairs: "), "Name a Value 1n\n");
    EXPECT_FALSE(CObUrl("n=x").GetPropLong("N", number));
    EXPECT_EQ(recorder.take("7 coburl: "), "the property N is not of the type that is asked for: x\n");
    EXPECT_FALSE(SQueryString("a[b").parse());
    EXPECT_EQ(recorder.take("7 squerystring: "), "the [ behind 1 characters of the pattern a[b has no ]\n");
    EXPECT_EQ(Pairs::Encode("a", "1", "b", nullptr), "");
    EXPECT_TRUE(recorder.sawLast("nvpairs", "FALSE"));
}

TEST(Cp932Urls, AnswerAsInTheFile) {
    const tarntest::LocaleScope locale(tarntest::kLocale932);
    tarntest::ExpectCalls("url/url_calls.txt", WatchedCalls());
    tarntest::ExpectCalls("url/url_calls_932.txt", WatchedCalls());
}

TEST(Utf8Urls, AnswerAsInTheFile) {
    tarntest::ExpectCalls("url/url_calls.txt", WatchedCalls());
    tarntest::ExpectCalls("url/url_calls_utf8.txt", WatchedCalls());
}
