// Each message ends with what to do, since whoever reads it has a program that does not start.
#include "ltreg/registry/store_messages.h"

#include "ltreg/cli/shown_text.h"

namespace ltreg {
namespace {

// As many lines as a message shows.
constexpr std::size_t kMostLost = 20;

const char* adviceOn(LTLib::StoreFaultKind kind) {
  using Kind = LTLib::StoreFaultKind;
  switch (kind) {
    case Kind::kNoIdentity:
      return "make sure that the folder exists and can be written";
    case Kind::kLockFailed:
      return "a lock that was abandoned is free for the next try; otherwise make sure that the"
             " folder exists and can be written";
    case Kind::kForeignLink:
      return "name the file itself, or let its folder's owner lay the link";
    case Kind::kNoFile:
      return "name a plain file";
    case Kind::kUnreadable:
    case Kind::kReadError:
      return "see to its permissions and its disk";
    default:
      return "correct that line, or put back the version before, which ends in '_old'";
  }
}

}  // namespace

std::string placeOf(const std::string& pathname, const LTLib::StoreFault& fault) {
  std::string place = escapeControls(pathname);
  if (fault.line != 0) {
    place += ':' + std::to_string(fault.line);
  }
  place.append(": ").append(LTLib::describeStoreFault(fault.kind));
  return fault.text.empty() ? place : place + ": " + escapeControls(fault.text);
}

std::string whyNotLoaded(const std::string& pathname, const LTLib::StoreReport& report) {
  const bool locked = report.fault->kind == LTLib::StoreFaultKind::kLockFailed ||
                      report.fault->kind == LTLib::StoreFaultKind::kNoIdentity;
  return (locked ? "the store was not looked at: "
                 : "the store does not load and was left alone: ") +
         placeOf(pathname, *report.fault) + " (" + adviceOn(report.fault->kind) + ')';
}

std::string whatWouldBeLost(const std::string& pathname, const LTLib::StoreReport& report) {
  std::string lines;
  std::size_t told = 0;
  for (const LTLib::StoreFault& warning : report.warnings) {
    if (warning.lost && told++ < kMostLost) {
      lines.append(placeOf(pathname, warning)) += '\n';
    }
  }
  return report.lostCount > kMostLost ? lines + "there is more; 'ltreg check' shows all\n" : lines;
}

std::string whatIsLeft(const std::string& pathname, const LTLib::StoreReport& report) {
  std::string names;
  for (const std::string& left : report.left) {
    names.append(names.empty() ? "" : ", ").append(inQuotes(left));
  }
  return names.empty() ? names
                       : "there is no store " + inQuotes(pathname) + ", but a save has left " +
                             names + "; put back what is needed";
}

}  // namespace ltreg
