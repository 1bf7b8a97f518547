// kavrin: the command-line host of clsPub.
#include <cstring>
#include <iostream>

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
    std::cout << "kavrin " << KAVRIN_VERSION << "\n";
    return 0;
  }
  std::cerr << "usage: kavrin --version\n";
  return 2;
}
