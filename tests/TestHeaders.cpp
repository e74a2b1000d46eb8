// A program that exists to carry the precompiled headers of the tests.
int main() {}
