// Prints the colours of a rectangle of a display's frame file, rrggbb, a line each, from the top.
// What waits for a picture looks many times a second, and takes the processor from the program that
// draws.
//
// area FILE START WIDTH X Y DX DY STEP: START is where the pixels begin, 4 bytes each: blue, green,
// red, nothing; WIDTH that of the display, X and Y the upper left; of each STEP by STEP pixels the
// first is taken.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

int main(int count, char** words) {
  if (count != 9) return 2;
  const int file = open(words[1], O_RDONLY);
  if (file < 0) return 1;
  long number[7];
  for (int i = 0; i < 7; ++i)
    number[i] = std::strtol(words[2 + i], nullptr, 10);
  const auto [start, width, x, y, dx, dy, step] = number;
  std::vector<unsigned char> row(static_cast<size_t>(dx * step * 4));
  for (long at = 0; at < dy; ++at) {
    const long first = start + ((y + at * step) * width + x) * 4;
    if (pread(file, row.data(), row.size(), first) != static_cast<ssize_t>(row.size())) return 1;
    for (const unsigned char* pixel = row.data(); pixel < row.data() + row.size();
         pixel += step * 4)
      std::printf("%02x%02x%02x\n", pixel[2], pixel[1], pixel[0]);
  }
  return 0;
}
