// Stands in for the desktop's opener in bench_go: notes the moment it started (CLOCK_MONOTONIC, the clock
// QElapsedTimer reads on Linux) and the target it was given, in the file named by $CORVALENT_PROBE_FILE.

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

int main(int argc, char** argv)
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const char* file = std::getenv("CORVALENT_PROBE_FILE");
    if (!file || argc < 2)
        return 2;
    // Written beside and renamed, so that the bench never reads half a note.
    const std::string part = std::string(file) + ".part";
    FILE* out = std::fopen(part.c_str(), "w");
    if (!out)
        return 1;
    std::fprintf(out, "%lld\n%s", static_cast<long long>(now.tv_sec) * 1000000000LL + now.tv_nsec, argv[1]);
    std::fclose(out);
    return std::rename(part.c_str(), file) == 0 ? 0 : 1;
}
