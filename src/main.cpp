#include "core/modMain.h"

int main() { return modMain::Main(); }
