// The commands, each as docs/ltreg.md tells it.
#ifndef LTREG_COMMANDS_COMMANDS_H
#define LTREG_COMMANDS_COMMANDS_H

#include <string>
#include <vector>

#include "ltreg/cli/request.h"

namespace ltreg {

ExitCode listKey(const Request& request, Output& output);
ExitCode listAll(const Request& request, Output& output);
ExitCode showTree(const Request& request, Output& output);
ExitCode getValues(const Request& request, Output& output);
ExitCode findEntries(const Request& request, Output& output);
ExitCode showDifferences(const Request& request, Output& output);
ExitCode showPath(const Request& request, Output& output);

ExitCode setValue(const Request& request, Output& output);

// As the system's tool has them, which parts words by a slash.
ExitCode queryKey(const Request& request, Output& output);
ExitCode addValue(const Request& request, Output& output);
/// The words for types, its own and that tool's.
[[nodiscard]] std::vector<std::string> typeWordsOfAdd();

ExitCode copyKey(const Request& request, Output& output);
ExitCode renameEntry(const Request& request, Output& output);
ExitCode exportKey(const Request& request, Output& output);
ExitCode importFile(const Request& request, Output& output);
ExitCode mergeFiles(const Request& request, Output& output);
ExitCode deleteEntry(const Request& request, Output& output);

/// Verbs from a file or standard input, saved once.
ExitCode runBatch(const Request& request, Output& output);

ExitCode explainEntry(const Request& request, Output& output);
ExitCode recoverStore(const Request& request, Output& output);

/// Tells of changes until the process is ended.
ExitCode watchKey(const Request& request, Output& output);

ExitCode checkStores(const Request& request, Output& output);

ExitCode expandText(const Request& request, Output& output);
ExitCode showVariables(const Request& request, Output& output);

/// What could come next behind the words of a command line, of which the last one is not ended.
ExitCode completeWords(const Request& request, Output& output);
/// What a shell has to read to complete the tool's command lines.
ExitCode showCompletion(const Request& request, Output& output);

/// The manual page in the form that `man` reads.
ExitCode showManual(const Request& request, Output& output);

ExitCode registerClass(const Request& request, Output& output);
ExitCode unregisterClass(const Request& request, Output& output);
ExitCode showOffers(const Request& request, Output& output);
ExitCode listClasses(const Request& request, Output& output);

}  // namespace ltreg

#endif  // LTREG_COMMANDS_COMMANDS_H
