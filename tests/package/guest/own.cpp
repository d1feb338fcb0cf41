// The including project's own library: it must be compiled as if there were no guest.
int own() {
    return 0;
}
