#include "device_service/Program.h"

int main(int count, char** arguments) {
    return Korvex3Sync::device_service::RunProgram(count, arguments);
}
