#pragma once

#include <cstdint>
#include <iosfwd>

#include "tarnlib/siarray.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// The command line of a process: its program's name and its options, in the order in which they were given.
///
/// An option is a word that begins with "-"; all dashes at its start are dropped, so "-trace" and "--trace"
/// are one option. The next word is its value unless that begins with "-" or is empty. Names are compared
/// without regard to case, by the collation of the C locale. An option is there once: given again it moves to
/// the end, with its last spelling and value. Words that are neither option nor value are dropped,
/// deliberately.
///
/// A plain value, to be copied freely; one thread at a time uses an object. Nothing throws on bad input.
///
///     CParamLineArgs args("server.exe -Port 8080 --verbose -name \"my server\"");
///     SAnsiString port;
///     if (args.Lookup("port", port)) Listen(port);             // "8080"
///     args.SetArg("port", "8081");
///     args.GetCmdLine();          // server.exe -verbose -name "my server" -port 8081
namespace TarnLibA500 {

class TARN_API CParamLineArgs {
  public:
    /// No program name and no options.
    CParamLineArgs();
    CParamLineArgs(const CParamLineArgs& other);
    CParamLineArgs(CParamLineArgs&& other) noexcept;
    CParamLineArgs(const SAnsiString& line);
    CParamLineArgs(const SAnsiString& line, const SChar_t<char, 0>& quote);
    CParamLineArgs(int count, char* const* arguments);
    CParamLineArgs& operator=(const CParamLineArgs& other);
    CParamLineArgs& operator=(CParamLineArgs&& other) noexcept;
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
    /// vector or its first entry, removes the options and leaves no program name.
    void SetArgs(int count, char* const* arguments);
    void SetArgs(const CParamLineArgs& other);

    /// Sets an option at the end; the name comes without dashes. Null counts as an empty text.
    void SetArg(const SAnsiString& name, const SAnsiString& value);
    void SetArg(const char* name, const char* value);
    void SetArg(const char* name, const SAnsiString& value);

    /// True, with the value, when the option is there; otherwise the value stays as it was.
    bool Lookup(const SAnsiString& name, SAnsiString& value) const;
    /// True when the option was there.
    bool RemoveArg(const SAnsiString& name);
    /// Takes the other's program name unless that is empty, and sets each of its options in their order.
    void MergeArgs(const CParamLineArgs& other);

    const SAnsiString& GetProgramName() const { return m_programName; }
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

    /// How many options there are, and each of them in its order; positions are not checked.
    std::uint32_t GetCount() const { return m_names.GetSize(); }
    const SAnsiString& GetName(std::uint32_t position) const { return m_names[position]; }
    const SAnsiString& GetValue(std::uint32_t position) const { return m_values[position]; }

  private:
    static constexpr std::uint32_t kNotFound = 0xFFFFFFFF;

    std::uint32_t findIndex(const SAnsiString& name) const;
    void DeleteAll();
    void takeWords(const SIArray<SAnsiString>& words);
    void appendWords(SIArray<SAnsiString>& args, SAnsiString (*written)(const SAnsiString&)) const;

    SAnsiString m_programName;
    SIArray<SAnsiString> m_names;   // without dashes
    SIArray<SAnsiString> m_values;  // of the same length
};

}  // namespace TarnLibA500
