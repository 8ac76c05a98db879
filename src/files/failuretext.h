#pragma once

#include "tarnlib/sstring.h"

/// The texts of file exceptions.
namespace TarnLibA500 {

/// A sentence with "%1" to "%3" replaced by texts. What the texts themselves hold is not looked at.
SAnsiString FillTemplate(const char* sentence, const SAnsiString& first, const SAnsiString& second,
                         const SAnsiString& third = SAnsiString());

/// The system's text for an error code, as it comes: with its line end. "system error" when there is none that
/// narrow text can hold.
SAnsiString SystemMessage(unsigned long code);

}  // namespace TarnLibA500
