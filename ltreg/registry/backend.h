// Which registry manager serves a request.
#ifndef LTREG_REGISTRY_BACKEND_H
#define LTREG_REGISTRY_BACKEND_H

#include <string>

#include "ltlib/ltlib.h"
#include "ltreg/cli/request.h"

namespace ltreg {

/// Makes the backend that --backend names the one of this process, and the time that --timeout names
/// its longest wait for a lock; before anything else touches the registry. Throws Failure where the system has no registry of its own.
void chooseBackend(const Request& request);

/// The manager that all programs get, or that --backend names, be it of this process or of one side
/// of a comparison; or with --store the file backend, which needs no marker.
class Backend {
 public:
  /// With --store the store becomes the root's file in this process. Throws Failure for a store
  /// without a name, for the registry of a system that has none, and for --view where there is one
  /// view alone.
  Backend(const Request& request, enumRegRoot root);

  [[nodiscard]] QSRegistryManagerImpl& manager() const { return *m_manager; }

  /// Whether roots lie in store files.
  [[nodiscard]] bool onFiles() const { return m_onFiles; }

  /// What --view adds to the rights that a key is opened for.
  [[nodiscard]] int viewAccess() const { return m_viewAccess; }

  /// The store file of a root; empty unless roots lie in store files. Throws Failure where the
  /// environment gives the root no file.
  [[nodiscard]] std::string storeOf(enumRegRoot root) const;

 private:
  QSRegistryManagerImpl* m_manager = nullptr;
  bool m_onFiles = true;
  int m_viewAccess = 0;
};

}  // namespace ltreg

#endif  // LTREG_REGISTRY_BACKEND_H
