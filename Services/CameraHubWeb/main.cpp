#include "Services/CameraHubWeb/Program.h"

int main(int count, char** texts) { return CameraHubWeb::runProgram(count, texts); }
