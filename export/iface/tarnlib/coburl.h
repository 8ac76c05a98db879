#pragma once

#include <cstdint>

#include "tarnlib/curlbase.h"
#include "tarnlib/nvpairs.h"
#include "tarnlib/sdatetime.h"
#include "tarnlib/siarray.h"

/// An object's URL with properties: object-url?name=value&name=value.
///
/// The properties are a map whose names ignore case; each has a text and is read as the type that the caller
/// wants. GetProp... return false, and leave the value alone, when there is no such property or its text is none
/// of the type; SetProp... replace the text. Numbers read as NeutralString::ToNumber reads them: "12.5" and "12
/// x" are the integer 12, and no text is 0. An object is used by one thread at a time.
///
///     CObUrl url("folder/report?depth=3&Name=Anna+B.");
///     long depth = 0;
///     if (url.GetPropLong("DEPTH", depth)) ...                      // 3
///     url.SetPropBool("final", true);
///     SAnsiString text = url.MakeURL();                             // folder/report?Name=Anna+B.&depth=3&final=1
///     for (auto i = url.Begin(); i != url.End(); ++i) Show(CObUrl::GetName(i), CObUrl::GetValueString(i));
namespace TarnLibA500 {

/// An object's URL with properties.
class TARN_API CObUrl : public CUrlBase {
  public:
    /// A position among the properties, in the order of the map.
    using Iterator = CMapNameValuePair::ConstIterator;

    /// The protocol "object" and nothing else.
    CObUrl();
    /// The URL that a text holds; see SetQueryString.
    explicit CObUrl(const SAnsiString& full);
    /// The same for ASCII text.
    explicit CObUrl(const SAsciiString& full);
    /// The same for a zero-terminated text; null is an empty one.
    explicit CObUrl(const char* full);
    /// A copy with properties of its own.
    CObUrl(const CObUrl&) = default;
    /// Takes on copies of everything.
    CObUrl& operator=(const CObUrl&) = default;
    /// Destroys the properties.
    ~CObUrl() override;
    /// Takes object-url?name=value&... apart and adds the properties to those that are there, as
    /// CMapNameValuePair::ParseParameter does; without a "?" the whole text is properties and the object URL
    /// stays. An empty text makes the text of GetQueryString empty and leaves the properties alone.
    void SetQueryString(const SAnsiString& full) override;
    /// The same for ASCII text.
    void SetQueryString(const SAsciiString& full);
    /// The same for a zero-terminated text; null is an empty one.
    void SetQueryString(const char* full);
    /// The object URL, "?" and the properties in the map's order, escaped; without an object URL the properties
    /// alone. Protocol and server are deliberately no part of it. GetQueryString tells the properties
    /// afterwards. A protocol other than "object" is reported by assertion.
    SAnsiString MakeURL() override;
    /// The same as ASCII text; an object URL that is not ASCII is reported by assertion and gives an empty text.
    SAsciiString MakeURLA();

    /// Splits at the first "?". Without one the parameters are the whole text, the object URL stays as it is,
    /// and the result is false.
    static bool SplitFullURL(const SAnsiString& full, SAnsiString& objectUrl, SAnsiString& parameters);
    /// The same for ASCII text.
    static bool SplitFullURL(const SAsciiString& full, SAsciiString& objectUrl, SAsciiString& parameters);

    /// The text before the "?".
    SAnsiString GetObjectUrl() const { return GetPath(); }
    /// Sets the text before the "?", which is not escaped.
    void SetObjectUrl(const SAnsiString& objectUrl) { SetPath(objectUrl); }
    /// The name of the object's class, which is no part of the URL.
    SAnsiStringCI GetClassNameA() const { return className_; }
    /// Sets the name of the object's class.
    void SetClassName(const SAnsiStringCI& name) { className_ = name; }

    /// The properties.
    CMapNameValuePair& GetNameValuePairMap() { return pairs_; }
    /// The properties, for reading.
    const CMapNameValuePair& GetNameValuePairMap() const { return pairs_; }
    /// Adds the properties of another URL; they replace those of the same name.
    void Add(const CObUrl& other);
    /// The first property; End() when there is none. Valid until that property is removed.
    Iterator Begin() const;
    /// Behind the last property.
    Iterator End() const;
    /// The name at a position.
    static SAnsiStringCI GetName(const Iterator& position);
    /// The text at a position.
    static SAnsiString GetValueString(const Iterator& position);

    // --- typed properties ---

    /// The text.
    bool GetPropString(const SAnsiStringCI& key, SAnsiString& value) const;
    /// The text, when it is ASCII.
    bool GetPropString(const SAnsiStringCI& key, SAsciiString& value) const;
    /// Sets the text.
    void SetPropString(const SAnsiStringCI& key, const SAnsiString& value);
    /// Sets the text.
    void SetPropString(const SAnsiStringCI& key, const SAsciiString& value);
    /// Sets the text to a zero-terminated one; null is an empty one.
    void SetPropString(const SAnsiStringCI& key, const char* value);
    /// A number from 0 to 255; true for all but 0.
    bool GetPropBool(const SAnsiStringCI& key, bool& value) const;
    /// "1" or "0".
    void SetPropBool(const SAnsiStringCI& key, bool value);
    /// A number from 0 to 255.
    bool GetPropByte(const SAnsiStringCI& key, unsigned char& value) const;
    /// A decimal number.
    void SetPropByte(const SAnsiStringCI& key, unsigned char value);
    /// A number of 16 bits.
    bool GetPropShort(const SAnsiStringCI& key, short& value) const;
    /// A decimal number.
    void SetPropShort(const SAnsiStringCI& key, short value);
    /// A number of 16 bits without a sign.
    bool GetPropUShort(const SAnsiStringCI& key, unsigned short& value) const;
    /// A decimal number.
    void SetPropUShort(const SAnsiStringCI& key, unsigned short value);
    /// A number of 32 bits.
    bool GetPropLong(const SAnsiStringCI& key, long& value) const;
    /// A decimal number.
    void SetPropLong(const SAnsiStringCI& key, long value);
    /// A number of 32 bits without a sign.
    bool GetPropULong(const SAnsiStringCI& key, unsigned long& value) const;
    /// A decimal number.
    void SetPropULong(const SAnsiStringCI& key, unsigned long value);
    /// The same as GetPropULong.
    bool GetPropDWord(const SAnsiStringCI& key, unsigned long& value) const;
    /// The same as SetPropULong.
    void SetPropDWord(const SAnsiStringCI& key, unsigned long value);
    /// A number of 64 bits.
    bool GetPropInt64s(const SAnsiStringCI& key, long long& value) const;
    /// A decimal number.
    void SetPropInt64s(const SAnsiStringCI& key, long long value);
    /// A real as NeutralString reads it.
    bool GetPropDouble(const SAnsiStringCI& key, double& value) const;
    /// The shortest text that reads back as the same number. One that is not finite is reported by assertion and
    /// leaves the property as it was.
    void SetPropDouble(const SAnsiStringCI& key, double value);
    /// A date and time as StringToDate reads it; in universal time where the text names no zone.
    bool GetPropDateTime(const SAnsiStringCI& key, SDateTime& value) const;
    /// yyyy-MM-ddTHH:mm:ss.SSSZ in universal time. An invalid one, or one of a year that has not four digits, is
    /// reported by assertion and leaves the property as it was.
    void SetPropDateTime(const SAnsiStringCI& key, const SDateTime& value);
    /// The numbers, in the order of the text.
    bool GetPropDWordArray(const SAnsiStringCI& key, SIArray<unsigned long>& values) const;
    /// "0=", the first number, "&1=", the second one, and so on; no text for no numbers.
    void SetPropDWordArray(const SAnsiStringCI& key, const SIArray<unsigned long>& values);
    /// The texts, in the order of the text.
    bool GetPropStringArray(const SAnsiStringCI& key, SIArray<SAnsiString>& values) const;
    /// The same as for numbers, each text escaped.
    void SetPropStringArray(const SAnsiStringCI& key, const SIArray<SAnsiString>& values);

  private:
    const SAnsiString* find(const SAnsiStringCI& key) const;
    template <class T>
    bool getNumber(const SAnsiStringCI& key, T& value) const;
    template <class Element, class Convert>
    bool getArray(const SAnsiStringCI& key, SIArray<Element>& values, Convert convert) const;

    SAnsiStringCI className_;
    CMapNameValuePair pairs_;
};

}  // namespace TarnLibA500
