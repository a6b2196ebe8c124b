#include "Application.h"
#include "system/Console.h"

int main(int argc, char** argv) {
    return vykeldev::runApplication(vykeldev::commandLineArguments(argc, argv));
}
