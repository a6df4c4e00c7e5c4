#include "tests/registry/backend_facts.h"

namespace LTLib::Testing {
namespace {

constexpr int kNotThere = 2;
constexpr int kDenied = 5;
constexpr int kBadHandle = 6;
constexpr int kMoreData = 234;

constexpr BackendFacts kFile = {
    .name = "file",
    .openMissingKey = 0,
    .missingKeyIsCreated = true,
    .readMissingKey = kFailure,
    .readingAddsKeys = true,
    .missing = -1,
    .nullHandle = -1,
    .deleteUnderMissing = -1,
    .unknownRoot = -1,
    .keyHasSubKeys = -1,
    .endOfWalk = -1,
    .walkOfMissingKey = -1,
    .nameTooLong = 0,
    .enumKey = -1,
    .typeAsksForNumber = true,
    .typeMayBeNull = true,
    .closesFormerHandle = true,
    .createSetsDefault = true,
    .writesDisposition = false,
    .textTerminators = 0,
    .listTerminators = 0,
    .expandType = REG_SZ,
    .keepsTypeOfExisting = true,
    .keepsForeignTypes = false,
    .binaryEndsAtNul = true,
    .splitsListItems = true,
    .keepsBytesThatAreNoText = true,
    .defaultName = "Default",
    .writeEmptyName = -1,
    .rootKeysHoldValues = false,
    .durableAtOnce = false,
    .hasStoreFile = true,
};

constexpr BackendFacts kSystem = {
    .name = "operating system",
    .openMissingKey = kNotThere,
    .missingKeyIsCreated = false,
    .readMissingKey = resultFromSystemError(kNotThere),
    .readingAddsKeys = false,
    .missing = kNotThere,
    .nullHandle = kBadHandle,
    .deleteUnderMissing = resultFromSystemError(kBadHandle),
    .unknownRoot = resultFromSystemError(kBadHandle),
    .keyHasSubKeys = resultFromSystemError(kDenied),
    .endOfWalk = resultFromSystemError(259),
    .walkOfMissingKey = resultFromSystemError(kNotThere),
    .nameTooLong = kMoreData,
    .enumKey = 0,
    .typeAsksForNumber = false,
    .typeMayBeNull = false,
    .closesFormerHandle = false,
    .createSetsDefault = false,
    .writesDisposition = true,
    .textTerminators = 1,
    .listTerminators = 2,
    .expandType = REG_EXPAND_SZ,
    .keepsTypeOfExisting = false,
    .keepsForeignTypes = true,
    .binaryEndsAtNul = false,
    .splitsListItems = false,
    .keepsBytesThatAreNoText = false,
    .defaultName = "",
    .writeEmptyName = 0,
    .rootKeysHoldValues = true,
    .durableAtOnce = true,
    .hasStoreFile = false,
};

}  // namespace

const BackendFacts& facts() {
  return GetConfigurationPathname(REG_ROOT_CURRENT_USER).empty() ? kSystem : kFile;
}

}  // namespace LTLib::Testing
