#include "Tools/CameraHub/Commands/Program.h"

int main(int count, char** texts) { return CommandLine::runProgram(count, texts); }
