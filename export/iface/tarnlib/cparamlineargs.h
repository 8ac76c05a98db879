#pragma once

#include <cstdint>
#include <iosfwd>
#include <type_traits>

#include "tarnlib/siarray.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// The command line of a process: its program's name and its options, in the order in which they were given.
///
/// An option is a word that begins with "-"; all dashes at its start are dropped, so "-trace" and "--trace"
/// are one option. The next word is its value unless that begins with "-" or is empty. Names are compared
/// without regard to case, by the collation of the C locale. An option is there once: given again it moves to
/// the end, with its last spelling and value. Words that are neither option nor value are dropped,
/// deliberately.
///
/// "-days -3" is therefore the option "days" with an empty value, and an option "3". So read numbers with
/// LookupNumber, for which an empty text is no number, and tell people which options nobody asked for:
///
///     CParamLineArgs args("server.exe -Port 8080 --verbose -name \"my server\"");
///     int port = 80;
///     SAnsiString given;
///     if (!args.LookupNumber("port", port, 1, 65535) && args.Lookup("port", given)) return Usage();
///     bool isVerbose = args.Lookup("verbose", given);
///     for (const SAnsiString& name : args.GetUnused()) Warn(name);      // name
///     args.SetArg("port", "8081");
///     args.GetCmdLine();          // server.exe -verbose -name "my server" -port 8081
///
/// A plain value, to be copied freely; one thread at a time uses an object. Nothing throws on bad input. An
/// allocation that fails throws "bad allocation", and leaves the object, and an array to be filled, as it
/// was.
class TARN_API CParamLineArgs {
  public:
    /// No program name and no options.
    CParamLineArgs();
    /// The same name and options; those that were asked for there count as asked for here.
    CParamLineArgs(const CParamLineArgs& other);
    /// Takes the other's name and options, and leaves it without.
    CParamLineArgs(CParamLineArgs&& other) noexcept;
    /// Takes a whole command line, as SetArgs does.
    CParamLineArgs(const SAnsiString& line);
    /// Takes a whole command line with another quote character, as SetArgs does.
    CParamLineArgs(const SAnsiString& line, const SChar_t<char, 0>& quote);
    /// Takes an argument vector, as SetArgs does.
    CParamLineArgs(int count, char* const* arguments);
    /// Takes the words of a command line, as SetArgs does.
    explicit CParamLineArgs(const SIArray<SAnsiString>& words);
    /// Becomes a copy of the other.
    CParamLineArgs& operator=(const CParamLineArgs& other);
    /// Takes the other's name and options, and leaves it without.
    CParamLineArgs& operator=(CParamLineArgs&& other) noexcept;
    /// Objects may be deleted through a pointer.
    virtual ~CParamLineArgs();

    /// Takes a whole command line in place of what is there. Words are separated by blanks, tabs and line
    /// ends; a word in double quotes keeps its blanks and loses its quotes, and still is an option when it
    /// begins with "-". The first word is the program's name, whatever it looks like. An empty line changes
    /// nothing; one of separators only removes the options and is reported by assertion
    /// ("!m_programName.isEmpty()") when no name was there.
    void SetArgs(const SAnsiString& line);
    /// The same with another quote character.
    void SetArgs(const SAnsiString& line, const SChar_t<char, 0>& quote);
    /// Takes an argument vector, up to its null entry. The count is deliberately not looked at. Null, for the
    /// vector or its first entry, removes the options and leaves no program name, which is reported by
    /// assertion. The vector that main gets is in the system's ANSI code page, with "?", or a look-alike, where
    /// that lacks a character: SEnvironment::GetArguments gives better words.
    void SetArgs(int count, char* const* arguments);
    /// Takes words, the program's name first. An empty array counts as a null vector.
    void SetArgs(const SIArray<SAnsiString>& words);
    /// Becomes a copy of the other.
    void SetArgs(const CParamLineArgs& other);

    /// Sets an option at the end; the name comes without dashes.
    void SetArg(const SAnsiString& name, const SAnsiString& value);
    /// The same. Null counts as an empty text.
    void SetArg(const char* name, const char* value);
    /// The same. Null counts as an empty text.
    void SetArg(const char* name, const SAnsiString& value);

    /// True, with the value, when the option is there; it then counts as asked for. Otherwise the value stays
    /// as it was.
    bool Lookup(const SAnsiString& name, SAnsiString& value) const;
    /// True, with the number, when the option is there and its whole value is a whole decimal number from
    /// least to most, with a "-" before it or not. Otherwise the number stays as it was; a value that is no
    /// such number is traced, and Lookup tells that there is one.
    template <class Number>
    requires(std::is_integral_v<Number> && !std::is_same_v<Number, bool> &&
             (std::is_signed_v<Number> ||
              sizeof(Number) <
                  sizeof(long long))) bool LookupNumber(const SAnsiString& name, Number& value,
                                                        std::type_identity_t<Number> least,
                                                        std::type_identity_t<Number> most) const {
        long long number = 0;
        if (!lookupNumber(name, number, least, most)) return false;
        value = static_cast<Number>(number);
        return true;
    }
    /// The names of the options that nobody asked for, in their order: those that no look-up has found since
    /// they were set. Copies remember for themselves: the logger, which has one, asks there for its own.
    SIArray<SAnsiString> GetUnused() const;
    /// True when the option was there.
    bool RemoveArg(const SAnsiString& name);
    /// Takes the other's program name unless that is empty, and sets each of its options in their order.
    void MergeArgs(const CParamLineArgs& other);

    /// The program's name; empty when there is none.
    const SAnsiString& GetProgramName() const { return m_programName; }
    /// Sets the program's name.
    void SetProgramName(const SAnsiString& name);

    /// One command line: the program's name, and "-name" or "-name value" for each option. A name or value
    /// with a blank in it that does not begin with a double quote is put in double quotes; nothing is
    /// escaped. Without a program name this is reported by assertion ("!m_programName.isEmpty()").
    SAnsiString GetCmdLine() const;
    /// The same as separate words, unquoted. The array must be empty (assertion "args.GetSize() == 0").
    void GetArgs(SIArray<SAnsiString>& args) const;
    /// The same with the quotes of GetCmdLine.
    void GetArgsWithQuote(SIArray<SAnsiString>& args) const;

    /// Sets an option from each line "name=value" of a stream, parted at the first "=". Only trailing white
    /// space is dropped: "a = 1" is the option "a " with the value " 1". Lines without "=" are ignored, a
    /// last line without its line end too, deliberately; a line with more characters than the longest (16 Mi
    /// at most) ends the reading.
    void ReadArgsAsProperties(std::istream& in, unsigned int longestLine);

    /// How many options there are.
    std::uint32_t GetCount() const { return m_names.GetSize(); }
    /// The name of an option in their order. Positions are not checked.
    const SAnsiString& GetName(std::uint32_t position) const { return m_names[position]; }
    /// The value of an option in their order. Positions are not checked. This does not count as asking.
    const SAnsiString& GetValue(std::uint32_t position) const { return m_values[position]; }

  private:
    static constexpr std::uint32_t kNotFound = 0xFFFFFFFF;

    bool isOrdered() const;
    void order();
    void append(const SAnsiString& name, const SAnsiString& value);
    void reserve(std::uint32_t count);
    void removeAt(std::uint32_t position);
    void DeleteAll();
    std::uint32_t findIndex(const SAnsiString& name) const;
    std::uint32_t findByCollation(const SAnsiString& name) const;
    bool lookupNumber(const SAnsiString& name, long long& value, long long least, long long most) const;
    void takeWords(const SIArray<SAnsiString>& words, const SAnsiString& program);
    void appendWords(SIArray<SAnsiString>& args, SAnsiString (*written)(const SAnsiString&)) const;

    SAnsiString m_programName;
    SIArray<SAnsiString> m_names;              // without dashes
    SIArray<SAnsiString> m_values;             // of the same length, and so is the next
    mutable SIArray<unsigned char> m_isAsked;  // 1 for an option that was looked up
    SIArray<std::uint32_t> m_marks;    // of the names, of the same length: what they have to be searched by
    std::uint64_t m_setUnder = 0;      // the collation under which the names were set
    SIArray<std::uint32_t> m_order;    // positions by their names, where there are many
    std::uint64_t m_orderedUnder = 0;  // the collation that the order follows
};

}  // namespace TarnLibA500
