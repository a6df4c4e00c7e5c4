// What the benchmark of components shares with the library of its peer.
#ifndef LTLIB_BENCH_COMPONENT_PEER_H
#define LTLIB_BENCH_COMPONENT_PEER_H

#include <string>

constexpr int kPeerClasses = 1000;

inline std::string peerClass(int number) {
  return "Product.Module.Class" + std::to_string(10000 + number);
}

struct PeerObject {
  virtual ~PeerObject() = default;
};

#endif  // LTLIB_BENCH_COMPONENT_PEER_H
