// What the two backends answer differently. The tests of the registry objects hold for both, and
// take from here what to expect of the one that serves.
#ifndef LTLIB_TESTS_REGISTRY_BACKEND_FACTS_H
#define LTLIB_TESTS_REGISTRY_BACKEND_FACTS_H

#include <string>

#include "ltlib/foundation/kqsresult.h"
#include "ltlib/registry/registry_manager.h"

namespace LTLib::Testing {

struct BackendFacts {
  const char* name;

  // Keys and values that are not there.
  int openMissingKey;           // the number of regOpenKeyEx
  bool missingKeyIsCreated;     // CQSRegKey::IsCreated
  QSResult readMissingKey;      // CQSRegValue::Read
  bool readingAddsKeys;         // such a read leaves empty keys behind
  int missing;                  // the number of a deletion of what is not there
  int nullHandle;               // the number of an operation on a null handle
  QSResult deleteUnderMissing;  // CQSRegValue::Delete under a key that is not there
  QSResult unknownRoot;         // a read under a root outside 1 to 5
  QSResult keyHasSubKeys;       // CQSRegKey::DeleteKey of one

  // Walks.
  QSResult endOfWalk;
  QSResult walkOfMissingKey;
  int nameTooLong;  // the number of regEnumKeyEx
  int enumKey;      // the number of regEnumKey for a key that is there

  // Raw calls.
  bool typeAsksForNumber;   // a type of 4 on entry reads any value as a number
  bool typeMayBeNull;       // and so may the size, in a query of the size
  bool closesFormerHandle;  // regOpenKeyEx closes what its result holds
  bool createSetsDefault;   // regCreateKey sets the default value to "0"
  bool writesDisposition;

  // Values.
  unsigned int textTerminators;  // counted in the size of a text
  unsigned int listTerminators;  // counted in the size of a list, behind its last item
  unsigned int expandType;       // what REG_EXPAND_SZ is read back as
  bool keepsTypeOfExisting;      // a set of another type changes the text alone
  bool keepsForeignTypes;        // types that no record holds come back as they were set
  bool binaryEndsAtNul;
  bool splitsListItems;          // at backslashes and commas
  bool keepsBytesThatAreNoText;  // texts are bytes, and not characters
  const char* defaultName;       // means the default value, as null does
  QSResult writeEmptyName;       // a store file has no place for one

  // The rest.
  bool rootKeysHoldValues;  // keys directly under a root are keys like others
  bool durableAtOnce;
  bool hasStoreFile;
};

/// The facts of the backend that serves this process.
[[nodiscard]] const BackendFacts& facts();

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_REGISTRY_BACKEND_FACTS_H
