#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

struct HKEY__;
typedef struct HKEY__* HKEY;

/// One key of the Windows registry, its values and what is below it.
///
/// A key is a root (HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER, ...) and the path below it, which must not end
/// with a backslash. It is opened for reading when it is first needed and stays open; writing opens it a
/// second time, because the first handle may not write, and makes it when it is missing. Keys are seen in the
/// process's own view (32 bits). Names and values are text in the process's code page; names ignore case.
///
/// Nothing throws: failures are false, an empty text, or no entry. What an operator should hear of, a refused
/// access for instance, is also reported by assertion (unit "registry"). One thread at a time uses an object.
///
///     Registry settings("SOFTWARE\\velmora\\Mailer", "mailer", HKEY_CURRENT_USER, true);
///     SAnsiString host = settings.ReadValue("host", SAnsiString("localhost"));   // now it is there
///     SAnsiString port = settings.ReadValue("port", 25UL);                       // "25"
///     for (Registry::ValueIterator value = settings.EnumValues(); value; ++value)
///         Print(value.GetName(), value.GetValue());
namespace TarnLibA500 {

class TARN_API Registry {
  public:
    /// What both kinds of iterators are: a position among the entries of a key. It has a handle of its own
    /// and is true while it stands on an entry. An entry that is deleted under way moves the ones behind it
    /// up.
    class TARN_API Iterator {
      public:
        Iterator(const Iterator&) = delete;
        Iterator& operator=(const Iterator&) = delete;

        explicit operator bool() const noexcept { return isOnEntry_; }
        /// The name of the entry, here twice because there are two words for it. Empty for a key's default
        /// value.
        const SAnsiStringCI& GetKey() const noexcept { return name_; }
        const SAnsiStringCI& GetName() const noexcept { return name_; }

        /// Takes over the other's handle and position, and leaves it on no entry.
        void consume(Iterator& other) noexcept;
        /// Gives the handle up to the caller, who closes it, and stands on no entry.
        HKEY detach() noexcept;

      protected:
        Iterator() noexcept = default;
        explicit Iterator(HKEY key) noexcept : key_(key) {}
        ~Iterator();

        HKEY key_ = nullptr;
        unsigned long next_ = 0;  ///< the index of the next entry
        bool isOnEntry_ = false;
        SAnsiStringCI name_;
        SAnsiString value_;
    };

    /// The sub-keys of a key, in the system's order.
    class TARN_API KeyIterator : public Iterator {
      public:
        /// Stands on no entry.
        KeyIterator() noexcept = default;
        KeyIterator(KeyIterator&& other) noexcept { consume(other); }
        KeyIterator& operator=(KeyIterator&& other) noexcept {
            consume(other);
            return *this;
        }
        KeyIterator& operator++() {
            NextKey();
            return *this;
        }
        /// Goes to the next sub-key; false behind the last.
        bool NextKey();

      private:
        friend class Registry;
        explicit KeyIterator(HKEY key);
    };

    /// The values of a key with their texts, as ReadValue gives them.
    class TARN_API ValueIterator : public Iterator {
      public:
        ValueIterator() noexcept = default;
        ValueIterator(ValueIterator&& other) noexcept { consume(other); }
        ValueIterator& operator=(ValueIterator&& other) noexcept {
            consume(other);
            return *this;
        }
        ValueIterator& operator++() {
            NextValue();
            return *this;
        }
        /// Goes to the next value; false behind the last.
        bool NextValue();
        const SAnsiString& GetValue() const noexcept { return value_; }

      private:
        friend class Registry;
        explicit ValueIterator(HKEY key);
    };

    /// The key is not touched yet. "name" is what GetKeyName shows to people. With "create" the key is made
    /// when it is missing at its first use.
    Registry(const SAnsiStringCI& subKey, const SAnsiStringCI& name, HKEY const& root, bool create);
    /// The same key; the copy opens it anew.
    Registry(const Registry& other);
    Registry& operator=(const Registry& other);
    ~Registry();

    /// True when the key can be opened for reading. A refused access is reported ("KeyExists failed. Access
    /// Denied").
    bool KeyExists();

    /// A value as text: REG_SZ as it is, REG_DWORD as an unsigned decimal number, REG_EXPAND_SZ with
    /// environment variables expanded (to 259 characters at most; more is reported and empty). Empty when it
    /// is missing, and for the other types.
    SAnsiString ReadValue(const SAnsiStringCI& name);
    /// The same; a missing value is first written with the default, deliberately, so that settings can be
    /// found. An empty value is not missing, nor is one that cannot be read at present. What is read back is
    /// returned; when it is not the default this is reported.
    SAnsiString ReadValue(const SAnsiStringCI& name, const SAnsiString& defaultValue);
    SAnsiString ReadValue(const SAnsiStringCI& name, unsigned long defaultValue);

    /// Writes a value as REG_SZ or REG_DWORD. False, and reported, when the system refuses.
    bool WriteValue(const SAnsiStringCI& name, const SAnsiString& value);
    bool WriteValue(const SAnsiStringCI& name, unsigned long value);

    /// True, with the system's number of the type (1: REG_SZ, 2: REG_EXPAND_SZ, 4: REG_DWORD, ...), when the
    /// value is there.
    bool GetType(const SAnsiStringCI& name, unsigned long& type);

    /// True when the value was there and is gone.
    bool DeleteValue(const SAnsiStringCI& name);
    /// Deletes the key with its values; refused, and reported, when it has sub-keys.
    bool DeleteKey();
    /// Deletes everything below the key, depth first, and with "self" the key too.
    bool DeleteKeyRecursive(bool self = true);

    KeyIterator EnumSubKeys();
    ValueIterator EnumValues();

    /// Copies a key with its values, of all types byte by byte, and its sub-keys into another, which is made
    /// when it is missing; what is already there stays. False when the source is missing, when the target
    /// lies in the source, and when the system refuses; what was copied until then stays.
    static bool CopyKey(HKEY sourceRoot, const SAnsiStringCI& source, HKEY targetRoot,
                        const SAnsiStringCI& target);
    /// Copies one value, of any type.
    static bool CopyValue(HKEY sourceRoot, const SAnsiStringCI& source, const SAnsiStringCI& name,
                          HKEY targetRoot, const SAnsiStringCI& target);

    /// Turns to the registry of another machine ("server" or "\\server"); an empty name is this one. It is
    /// connected when the key is next opened.
    void SetRemoteMachine(SAnsiString machine);
    /// Takes a handle of a root of another machine, which the caller keeps and closes.
    void SetRemoteKeyHandle(HKEY root);
    const SAnsiString& GetRemoteMachineName() const noexcept { return machine_; }
    bool IsRemoteReg() const noexcept { return isRemote_; }

    const SAnsiStringCI& GetKeyName() const noexcept { return name_; }
    const SAnsiStringCI& GetSubKey() const noexcept { return subKey_; }

  protected:
    /// The text of a value of an open key, and its type. The type is 0 when the value is missing.
    SAnsiString ReadValue(const SAnsiStringCI& name, HKEY& key, unsigned long& type);
    bool WriteValue(const SAnsiStringCI& name, const SAnsiString& value, HKEY& key);
    bool WriteValue(const SAnsiStringCI& name, unsigned long value, HKEY& key);

  private:
    long look(const SAnsiStringCI& name, unsigned long& type);
    template <class Query>
    long query(Query call);
    SAnsiString readBack(const SAnsiStringCI& name, const SAnsiString& expected, const char* expression);
    bool isPathUsable() const;
    HKEY rootInUse();
    long open();
    long openReported();
    bool openForRead();
    HKEY openForWrite();
    bool write(const SAnsiStringCI& name, unsigned long type, const void* data, unsigned long bytes,
               HKEY key);
    void close() noexcept;
    void disconnect() noexcept;

    SAnsiStringCI subKey_;
    HKEY root_;
    SAnsiStringCI name_;
    SAnsiString machine_;
    HKEY remoteRoot_ = nullptr;
    bool isRemote_ = false;
    bool ownsRemoteRoot_ = false;
    HKEY key_ = nullptr;
    bool create_;
};

}  // namespace TarnLibA500
