/* Runs only if this machine can execute binaries of the target. */
int main(void) { return 0; }
