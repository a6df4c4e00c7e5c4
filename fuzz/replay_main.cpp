// Runs every file of a folder through a fuzz target, and then texts put together from them, with any
// compiler:  NAME_replay FOLDER [SEED]
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr int kRounds = 10000;

void run(const std::string& bytes) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

// Each run of bytes is followed by one that means something to the reader: faults lie at the seams.
std::string spliced(const std::vector<std::string>& inputs, std::mt19937& random) {
  const std::string special("\\\"[]=:,\n\r \0a", 12);
  std::string made;
  for (auto pieces = 1 + random() % 4; pieces != 0; --pieces) {
    const std::string& input = inputs[random() % inputs.size()];
    const std::size_t start = random() % (input.size() + 1);
    made += input.substr(start, random() % 32) + special[random() % special.size()];
  }
  return made;
}

}  // namespace

int main(int count, char** words) {
  std::vector<std::string> inputs;
  for (const auto& entry : std::filesystem::directory_iterator(words[1])) {
    std::ifstream file(entry.path(), std::ios::binary);
    inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    // A target that crashes leaves this line as the last one.
    std::fprintf(stderr, "%s\n", entry.path().filename().string().c_str());
    run(inputs.back());
  }
  // In the same order on every system, so that the seed alone makes the texts.
  std::sort(inputs.begin(), inputs.end());
  const unsigned int seed =
      count > 2 ? static_cast<unsigned int>(std::atoi(words[2])) : std::random_device()();
  std::fprintf(stderr, "%d texts with the seed %u\n", kRounds, seed);
  std::mt19937 random(seed);
  for (int round = 0; round < kRounds; ++round) {
    run(spliced(inputs, random));
  }
  return 0;
}
