#include <stdio.h>
#include <string.h>

#include <quarn.h>

int main(void) {
    const char* name = q_error_name((uint32_t)q_error_error);
    if (name == NULL || strcmp(name, "error") != 0) {
        fprintf(stderr, "unexpected name: %s\n", name == NULL ? "(null)" : name);
        return 1;
    }
    printf("%s\n", name);
    return 0;
}
