/* The first scene: two groups with a box each. One moves towards the other; how near do they come,
 * and what collides?
 *
 * Build against an installed library:  cc first_scene.c $(pkg-config --cflags --libs kestrane) */
#include <kestrane.h>
#include <stdio.h>
#include <stdlib.h>

/* Most calls of a host only fail by a mistake in the host. */
static void require(int code, const char* call) {
    if (code != KST_OK) {
        fprintf(stderr, "first_scene: %s gave %d\n", call, code);
        exit(2);
    }
}

int main(void) {
    int gripper, table, tool, plate, step;

    require(KST_Initialisation(false, false, false), "KST_Initialisation");
    require(KST_CreateGroup(&gripper, 0, true, "gripper", false), "KST_CreateGroup");
    require(KST_CreateGroup(&table, 0, true, "table", false), "KST_CreateGroup");
    require(KST_CreateBox(gripper, 0.2f, 0.2f, 0.2f, 0, 0, 0, &tool, "tool"), "KST_CreateBox");
    require(KST_CreateBox(table, 2, 0.1f, 1, 0, 0, 0, &plate, "plate"), "KST_CreateBox");

    for (step = 0; step < 3; ++step) {
        const float height = 0.5f - 0.2f * (float)step;
        KstCollisionResult result; /* one pair of objects, so one record at most */
        int count = 0;

        require(KST_SetGroupPosition(gripper, 0, height, 0), "KST_SetGroupPosition");
        require(KST_CheckGroupCollision(gripper, table, true, &count), "KST_CheckGroupCollision");
        if (count == 0) {
            require(KST_GetClosestPairs(gripper, table, &count), "KST_GetClosestPairs");
            require(KST_GetResults(&result), "KST_GetResults");
            printf("height %.2f: free, distance %.3f\n", height, result.value);
        } else {
            require(KST_GetPenetrationDepths(gripper, table, &count), "KST_GetPenetrationDepths");
            require(KST_GetResults(&result), "KST_GetResults");
            printf("height %.2f: object %d collides with object %d, depth %.3f\n", height,
                   result.id1, result.id2, result.value);
        }
    }

    require(KST_End(), "KST_End");
    return 0;
}
