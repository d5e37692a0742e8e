/* A host in C99: one box, one sphere that reaches into it, one question. */
#include <kestrane.h>
#include <stdio.h>

static int failed(const char* what, int code) {
    if (code != KST_OK) {
        fprintf(stderr, "%s: %d\n", what, code);
    }
    return code != KST_OK;
}

int main(void) {
    int table, ball, box, sphere, count;
    KstCollisionResult result;

    if (failed("start", KST_Initialisation(false, false, false)) ||
        failed("group", KST_CreateGroup(&table, 0, true, "table", false)) ||
        failed("group", KST_CreateGroup(&ball, 0, true, "ball", false)) ||
        failed("box", KST_CreateBox(table, 2.0f, 1.0f, 2.0f, 0.0f, 0.0f, 0.0f, &box, NULL)) ||
        failed("sphere", KST_CreateSphere(ball, 0.5f, 0.0f, 0.0f, 0.0f, &sphere, NULL)) ||
        failed("move", KST_SetGroupPosition(ball, 0.0f, 0.9f, 0.0f)) ||
        failed("check", KST_CheckGroupCollision(table, ball, true, &count)) || count != 1 ||
        failed("results", KST_GetResults(&result))) {
        return 1;
    }
    printf("%d collision between box %d and sphere %d\n", count, result.id1, result.id2);
    return result.id1 == box && result.id2 == sphere ? KST_End() : 1;
}
