#pragma once

#include <cstdint>

#include "tarnlib/refcount.h"
#include "tarnlib/siarray.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Values by section and key, from a text file or from the landscape file of a connection client.
///
/// A text file has sections, "[name]", and in them lines "key=value":
/// - A section's name runs from "[" to the next "]", blanks included; its body from there to the next line
///   that begins with "[" in its first column. What stands before the first section is ignored.
/// - White space around a line, a key and a value is dropped. Everything else is taken as it is: there are no
///   comments, no quotes and no escapes, and case matters.
/// - The first line that is not empty and has no "=" ends its section, deliberately: what follows is lost.
/// - Of lines with the same key the first counts. Where white space stands before their "=", the last of
///   those lines does, deliberately.
/// - Sections of the same name stay apart, and for a look-up the last of them decides alone.
///
/// A reader is loaded once. From then on any number of threads may look up in it at the same time. Nothing
/// throws but "bad allocation".
///
///     ConfigFileReader settings;
///     if (!settings.initialize("C:\\data\\mailer.ini")) return false;      // why is in the log
///     SAnsiString host = settings.getValue("server", "host", "localhost");
namespace TarnLibA500 {

class Landscape;
struct LandscapeService;

class TARN_API ConfigFileReader {
  public:
    enum FileEncoding {
        nativeCodePage = 0,  ///< the file is text of the process's code page
        utf8 = 1             ///< the file is UTF-8
    };

    /// One section: its name, and its values by their keys.
    class TARN_API SectionData : public CRefCount {
      public:
        /// The body is the text behind the "]", up to where the next section begins.
        SectionData(const SAnsiString& name, const SAnsiString& body);
        SectionData(const SectionData& other);
        SectionData& operator=(const SectionData&) = delete;
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
    ConfigFileReader(ConfigFileReader&& other) noexcept;
    ConfigFileReader& operator=(const ConfigFileReader& other);
    ConfigFileReader& operator=(ConfigFileReader&& other) noexcept;
    ~ConfigFileReader();

    /// Loads a file. False, which is traced, when it cannot be read; false, too, when it is empty or no valid
    /// UTF-8. True at once, without a look at the file, when the reader is initialized already.
    bool initialize(const SAnsiString& path) { return initialize(path, utf8); }
    bool initialize(const SAnsiString& path, FileEncoding encoding);
    /// Loads a landscape file, XML 1.0 or 1.1: a section for each service of type "mirelms", named by its
    /// "name". docs/configuration.md lists elements and keys. False, with the place in the trace, for
    /// everything that is not such a document; then the reader is as it was. A document type declaration is
    /// refused, and nothing but the file itself is read. Limits: 8 MiB, 64 levels, 1,000,000 elements and
    /// attributes, 1,000 different names of elements, 64 KiB for one tag.
    bool initializeFromXML(const SAnsiString& path);

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
    void buildConfigData(const SAnsiString& text);
    bool buildConfigDataFromXML(const SAnsiString& path);
    void addService(const Landscape& landscape, const LandscapeService& service);
    static SAnsiString getValueFromNameValuePair(const SAnsiString& name, const SAnsiString& value);
    void buildNameIndex();
    /// Calls for each section of a name in the order of the file.
    template <class Use>
    void forEachSection(const SAnsiString& name, Use use) const;

    SIArray<CRefPtr<SectionData>> sections_;
    bool initialized_ = false;
    SIArray<std::uint32_t> byName_;  ///< sections by the hash of their name, then in the order of the file
};

}  // namespace TarnLibA500
