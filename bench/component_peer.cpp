// The peer's library: 1,000 names for one class.
#include <Poco/ClassLibrary.h>
#include <Poco/Manifest.h>
#include <Poco/MetaObject.h>

#include <vector>

#include "bench/component_peer.h"

namespace {

struct Object : PeerObject {};

// The peer keeps pointers to the names.
const std::vector<std::string>& names() {
  static const std::vector<std::string> s_names = [] {
    std::vector<std::string> made;
    for (int i = 0; i < kPeerClasses; ++i) {
      made.push_back(peerClass(i));
    }
    return made;
  }();
  return s_names;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) bool pocoBuildManifest(
    Poco::ManifestBase* manifest) {
  using Manifest = Poco::Manifest<PeerObject>;
  if (std::string(manifest->className()) != typeid(Manifest).name()) {
    return false;
  }
  for (const std::string& name : names()) {
    static_cast<Manifest*>(manifest)->insert(
        new Poco::MetaObject<Object, PeerObject>(name.c_str()));
  }
  return true;
}
