#include <cstdio>

#include "tarnlib/simap.h"
#include "tarnlib/stringhelper.h"

using namespace TarnLibA500;

int main() {
    const SAnsiString text("The quick fox and the lazy dog: the dog sleeps, the fox does not.");
    SIArray<SAnsiString> words;
    SStringHelper::makeWords(text, words, " ,.:", false, false);

    SIMap<SMapStringCaseInsensitive, int> counts;  // "The" and "the" are one key
    for (const SAnsiString& word : words) {
        int count = 0;
        counts.Lookup(word, count);
        counts.SetAt(word, count + 1);
    }

    SAnsiString report;
    for (auto entry = counts.GetFirst(); entry != counts.End(); ++entry) {
        report << entry.GetKey().GetString() << ": " << entry.GetValue() << "\n";
    }
    std::printf("%s", report.getString());
}
