// What the command line asks for.
#ifndef LTREG_CLI_REQUEST_H
#define LTREG_CLI_REQUEST_H

#include <optional>
#include <string>
#include <vector>

#include "ltreg/cli/failure.h"
#include "ltreg/cli/output.h"

namespace ltreg {

/// The words of --backend.
inline constexpr char kFileBackend[] = "file";
inline constexpr char kSystemBackend[] = "os";

/// The words of --view.
inline constexpr char kNarrowView[] = "32";
inline constexpr char kWideView[] = "64";

/// The arguments of all commands; each uses those that belong to it, as they were given.
struct Request {
  std::optional<std::string> key;         // KEY or ROOT
  std::optional<std::string> target;      // the second KEY
  std::optional<std::string> name;        // NAME
  std::optional<std::string> valueName;   // --value
  std::optional<std::string> data;        // --data
  std::optional<std::string> text;        // TEXT, PATTERN
  std::optional<std::string> clsid;       // CLASS
  std::optional<std::string> library;     // --all, LIBRARY
  std::optional<std::string> file;        // FILE
  std::optional<std::string> type;        // --type
  std::optional<std::string> outputFile;  // -o
  std::optional<std::string> encoding;    // --encoding
  std::optional<std::string> format;      // --format
  std::optional<std::string> fallback;    // --default
  std::optional<std::string> places;      // --in
  std::optional<std::string> settings;    // --settings
  std::vector<std::string> values;        // VALUE...
  std::optional<std::string> store;       // --store
  std::optional<std::string> backend;     // --backend
  std::optional<std::string> view;        // --view
  std::optional<std::string> colour;      // --color
  bool pager = false;
  std::optional<std::string> take;  // --take
  bool json = false;
  bool recursive = false;
  bool trace = false;
  bool asPatch = false;  // --patch
  bool html = false;
  bool dryRun = false;
  bool lossy = false;
  bool force = false;
  bool missing = false;
  bool load = false;
  bool null = false;  // -0
  bool glob = false;
  bool regex = false;
  bool ignoreCase = false;
  bool asIs = false;
  bool create = false;
  bool literal = false;  // percent signs of KEY are no references
  bool quiet = false;    // leaves the warnings about the store to another process
  bool asText = false;   // --text: bytes are given and shown as text
  int timeout = 10;      // seconds
  int lockTimeout = 0;   // seconds; 0 for no end
};

/// Carries a request out. Throws Failure, and what the library throws.
using Command = ExitCode (*)(const Request& request, Output& output);

}  // namespace ltreg

#endif  // LTREG_CLI_REQUEST_H
