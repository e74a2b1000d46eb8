#include "korvexctl/Program.h"

int main(int count, char** arguments) {
    return Korvex3Sync::korvexctl::RunProgram(count, arguments);
}
