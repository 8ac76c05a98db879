#pragma once

#include <cstdint>

#include "tarnlib/refcount.h"
#include "tarnlib/siarray.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

class ConfigLosses;

/// Values by section and key, from a text file or from the landscape file of a connection client.
///
/// A text file has sections, "[name]", and in them lines "key=value":
/// - A section's name runs from "[" to the next "]", blanks included; its body from there to the next line
///   that begins with "[" in its first column. What stands before the first section is ignored.
/// - White space around a line, a key and a value is dropped. Everything else is taken as it is: there are no
///   comments, no quotes and no escapes, and case matters.
/// - The first line that is not empty and has no "=" ends its section, deliberately: what follows is lost,
///   and traced.
/// - Of lines with the same key the first counts. Where white space stands before their "=", the last of
///   those lines does, deliberately.
/// - Sections of the same name stay apart, and for a look-up the last of them decides alone.
///
/// A reader is loaded once. From then on any number of threads may look up in it at the same time. Nothing
/// throws but "bad allocation", which leaves the reader as it was. What cannot be loaded, and lines that are
/// lost, are traced at a level that logs show unless told otherwise, and told by GetLastErrorText.
///
///     ConfigFileReader settings;
///     if (!settings.initialize("C:\\data\\mailer.ini")) return Fail(settings.GetLastErrorText());
///     SAnsiString host = settings.getValue("server", "host", "localhost");
class TARN_API ConfigFileReader {
  public:
    /// What the bytes of a file are.
    enum FileEncoding {
        nativeCodePage = 0,  ///< the file is narrow text, taken as it is
        utf8 = 1             ///< the file is UTF-8
    };

    /// One section: its name, and its values by their keys.
    class TARN_API SectionData : public CRefCount {
      public:
        /// The body is the text behind the "]", up to where the next section begins.
        SectionData(const SAnsiString& name, const SAnsiString& body);
        /// A copy shares the text.
        SectionData(const SectionData& other);
        SectionData& operator=(const SectionData&) = delete;
        /// Lets go of the text.
        virtual ~SectionData();

        /// As it stands between the brackets.
        const SAnsiString& getSectionName() const noexcept { return name_; }
        /// True, with the value, when the section has the key; otherwise the value stays.
        bool lookup(const SAnsiString& key, SAnsiString& value) const;
        /// Appends all keys, in the order of their unsigned bytes.
        void getAllKeys(SIArray<SAnsiString>& keys) const;

      private:
        friend class ConfigFileReader;
        struct Lines;
        /// The entries of the section are these of the lines.
        SectionData(const SAnsiString& name, const CRefPtr<Lines>& lines, std::uint32_t first,
                    std::uint32_t count);

        SAnsiString name_;
        std::uint32_t nameHash_;
        CRefPtr<Lines> lines_;
        std::uint32_t first_;
        std::uint32_t count_;
    };

    /// Not initialized.
    ConfigFileReader();
    /// A copy shares the sections.
    ConfigFileReader(const ConfigFileReader& other);
    /// Takes the sections; the other is not initialized any more.
    ConfigFileReader(ConfigFileReader&& other) noexcept;
    /// Shares the other's sections in place of its own.
    ConfigFileReader& operator=(const ConfigFileReader& other);
    /// Takes the other's sections in place of its own; the other is not initialized any more.
    ConfigFileReader& operator=(ConfigFileReader&& other) noexcept;
    /// Lets go of the sections.
    ~ConfigFileReader();

    /// Loads a file in UTF-8, as below.
    bool initialize(const SAnsiString& path) { return initialize(path, utf8); }
    /// Loads a file. False, with the reason in the trace and in GetLastErrorText, when it cannot be read, is
    /// empty or no valid UTF-8; then the reader is as it was. True at once, without a look at the file, when
    /// the reader is initialized already.
    bool initialize(const SAnsiString& path, FileEncoding encoding);
    /// Loads a landscape file, XML 1.0 or 1.1: a section for each service of type "mirelms", named by its
    /// "name". docs/configuration.md lists elements and keys. False, with the place in the trace and in
    /// GetLastErrorText, for everything that is not such a document; then the reader is as it was. A document
    /// type declaration is refused, and nothing but the file itself is read. Limits: 8 MiB, 64 levels,
    /// 1,000,000 elements and attributes, 1,000 different names of elements, 64 KiB for one tag.
    bool initializeFromXML(const SAnsiString& path);
    /// Why the last loading failed: "C:\data\mailer.ini: not found", "...: not UTF-8 at byte 17" (counted
    /// from 0). After one that did not, a line for each section that lost lines, but for 20 at most:
    /// "mailer.ini, line 3: no =, lines 3 to 5 of [service] are not read". Empty when all is well.
    const SAnsiString& GetLastErrorText() const noexcept { return problem_; }

    /// The value of a key in the last section of that name, or the default where that section lacks it. White
    /// space around the section's name is dropped, so a section whose own name has some is never found; the
    /// key is taken as it is. Before initialize it is reported by assertion and gives the default.
    SAnsiString getValue(const SAnsiString& section, const SAnsiString& key,
                         const SAnsiString& defaultValue) const;
    /// Replaces the array by the names of all sections in the order of the file, repeated ones repeatedly.
    /// False, reported by assertion, before initialize.
    bool getSections(SIArray<SAnsiString>& names) const;
    /// Replaces the array by the keys of all sections of that name. False when there is none, and, reported
    /// by assertion, before initialize.
    bool enumerateSection(const SAnsiString& section, SIArray<SAnsiString>& keys) const;

  private:
    bool requireInitialized() const;
    void buildConfigData(const SAnsiString& text, ConfigLosses& losses);
    bool buildConfigDataFromXML(const SAnsiString& path);
    void takeSections(SIArray<CRefPtr<SectionData>>& sections, SAnsiString problem);
    static SAnsiString getValueFromNameValuePair(const SAnsiString& name, const SAnsiString& value);
    /// Calls for each section of a name in the order of the file.
    template <class Use>
    void forEachSection(const SAnsiString& name, Use use) const;

    SIArray<CRefPtr<SectionData>> sections_;
    bool initialized_ = false;
    SIArray<std::uint32_t> byName_;  ///< sections by the hash of their name, then in the order of the file
    SAnsiString problem_;
};

}  // namespace TarnLibA500
