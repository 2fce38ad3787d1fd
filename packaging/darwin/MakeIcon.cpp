// SPDX-License-Identifier: MIT
// Draws the program's icon for macOS, as part of the build: MakeIcon DRAWING.svg ICON.icns
#include "packaging/darwin/Icns.h"

#include <QFile>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
  if (argc != 3) return EXIT_FAILURE;
  const QByteArray icon = vantle::icnsOf(QFile::decodeName(argv[1]));
  QFile file(QFile::decodeName(argv[2]));
  if (!icon.isEmpty() && file.open(QIODevice::WriteOnly) && file.write(icon) == icon.size() && file.flush())
    return EXIT_SUCCESS;
  std::fprintf(stderr, "no icon could be made of %s\n", argv[1]);
  return EXIT_FAILURE;
}
