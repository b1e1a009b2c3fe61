#include "app/startup.h"

int main() { return modMain::Main(); }
