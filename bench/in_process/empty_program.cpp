// What a program of this build costs before it does anything.
int main() {}
