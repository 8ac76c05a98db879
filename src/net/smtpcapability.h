#pragma once

#include <string_view>

/// What a mail server says that it can do.
namespace TarnLibA500::smtp {

/// True when a line of the reply to EHLO begins with a word and has an option behind it, or any when the option is
/// empty. Case plays no part, and options may follow by "=" as old servers write it.
bool Offers(std::string_view helloReply, std::string_view word, std::string_view option = {});

}  // namespace TarnLibA500::smtp
