// SPDX-License-Identifier: MIT
#include "app/VantleApp.h"

int main(int argc, char** argv) { return vantle::VantleApp(argc, argv).run(); }
