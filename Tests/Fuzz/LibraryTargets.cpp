#include "Tests/Fuzz/LibraryTargets.h"

#include "TidewellCore/Library/MessageFacts.h"
#include "TidewellCore/Platform/Precondition.h"

void LibraryTargets::messageFacts(ByteView input) {
  const MessageDetails details = MessageFacts::read(textOf(input));
  const std::string written = MessageFacts::write(details);
  precondition(written.empty() == (details == MessageDetails()), "what says something is written");
  precondition(MessageFacts::read(written) == details, "facts that were written are read again");
}
