// Linked with one layer of the core taken whole, to prove that the layer needs nothing above it.
int main() { return 0; }
