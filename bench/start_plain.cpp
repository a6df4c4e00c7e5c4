// A process that does nothing, without the library. What it prints to keeps the standard library.
#include <iostream>

int main() {
  std::cout.flush();
}
