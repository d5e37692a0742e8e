/*
 * Kestrane: a collision checker and scene visualiser in one library.
 *
 * A host builds a tree of groups and simple shapes, or loads one from a file, moves things about,
 * and asks what collides, how far apart things are and how deep they penetrate:
 *
 *     #include <kestrane.h>
 *     #include <stdio.h>
 *     #include <stdlib.h>
 *
 *     int main(void) {
 *         int cell, arm, table, tool, count, i;
 *         KstCollisionResult* results;
 *
 *         KST_Initialisation(false, false, false);
 *         KST_CreateGroup(&cell, 0, true, "cell", false);
 *         KST_CreateGroup(&arm, 0, true, "arm", false);
 *         KST_CreateBox(cell, 2.0f, 0.1f, 2.0f, 0.0f, 0.0f, 0.0f, &table, "table");
 *         KST_CreateCylinder(arm, 0.05f, 1.0f, 0.0f, 0.5f, 0.0f, &tool, "tool");
 *         KST_SetGroupPosition(arm, 0.3f, 0.0f, 0.0f);
 *         if (KST_CheckGroupCollision(cell, arm, true, &count) == KST_OK && count > 0) {
 *             results = malloc((size_t)count * sizeof *results);
 *             KST_GetResults(results);
 *             for (i = 0; i < count; ++i) {
 *                 printf("object %d touches object %d\n", results[i].id1, results[i].id2);
 *             }
 *             free(results);
 *         }
 *         return KST_End();
 *     }
 *
 * Codes. Every function returns KST_OK or one of the negative codes of KstCode, listed with the
 * function in the order in which the tests are made. Three hold everywhere and are not repeated:
 * KST_ERROR_NOT_INITIALISED from every function but KST_Initialisation while the library is not
 * running, KST_ERROR_ARGUMENT when a pointer is null that may not be, and KST_ERROR_ARGUMENT when
 * there is not enough memory. A refused call changes nothing, KST_LoadScene and the
 * findings of a query apart, and writes through no pointer. Range tests let a value pass that is
 * not a number (NaN).
 *
 * Ids. Groups and objects are named by two separate counters that start at 0 with each
 * KST_Initialisation; an id is never given out twice. Group 0 is the root group, labelled "Root
 * group": it is there from the start, holds groups but no objects, and is not to be moved or
 * changed.
 *
 * Labels. A group or object may have a label; null or an empty text means none. Groups and objects
 * share one list of labels. Texts are plain bytes up to a zero.
 *
 * Space. Lengths are the host's own unit; the frame is right-handed. Angles are radians from 0 to
 * 6.2831855, both included. A matrix is 16 floats, row by row, and acts on column vectors: the
 * translation stands at elements 3, 7 and 11. Each group and object has a pose (rotation, then
 * translation) and a scale that acts before it; the place of a group is relative to its parent,
 * that of an object to its group. Colours and opacities lie in [0, 1]. Times have the unit that the
 * host gives them; time moves only by KST_SetTime.
 *
 * Contact. Exactly touching is contact. Triangles, polygons and polygon groups are surfaces, not
 * the space inside: what lies wholly within a closed mesh does not touch it. Polylines take part in
 * no collision and no distance, nor does an object whose place in the world is not finite.
 *
 * Collision capability. Only objects directly in a group that is capable take part in queries.
 * Capability is a group's own: groups below do not inherit it.
 *
 * Headless. Without a display, or in a library built without one, the scene and all queries work in
 * full; what concerns only the display tests the arguments that its entry says and returns KST_OK.
 *
 * Display. Windows, mouse and keys live on a thread of the library's own; calls change the scene at
 * once and ask for a new picture, which that thread draws. Where there is no screen, the windows
 * exist in memory alone and can still be captured. A user who closes the window of view 1, 2 or 3
 * does what KST_HideView does; the main view stays open. If the screen is lost, the library goes
 * on, and nothing is drawn any more.
 *
 * Memory. Arrays and texts that a host passes are read during the call and not kept. Arrays that
 * KST_GetObject hands out are the host's, to be released with free().
 *
 * Threads. Any thread may call; calls take turns. The findings are those of the last query of any
 * thread: threads that query at the same time need a lock of their own around a query and its
 * KST_GetResults. KST_End waits for a call that is in progress; one
 * that comes later returns KST_ERROR_NOT_INITIALISED.
 */

#ifndef KESTRANE_H
#define KESTRANE_H

#include <stdbool.h>

/* A host that links the library statically defines KESTRANE_STATIC. */
#if defined(_WIN32)
#if defined(KESTRANE_BUILDING)
#define KST_API __declspec(dllexport)
#elif defined(KESTRANE_STATIC)
#define KST_API
#else
#define KST_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define KST_API __attribute__((visibility("default")))
#else
#define KST_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Codes and records ----------------------------------------------------------------------- */

/* What every function returns. -15 is not in use. */
typedef enum KstCode {
    /* Success, or nothing to do because there is no display. */
    KST_OK = 0,
    /* The library is not running. */
    KST_ERROR_NOT_INITIALISED = -1,
    /* There is no such group, or it is the root group where that is not allowed. */
    KST_ERROR_UNKNOWN_GROUP = -2,
    /* There is no such parent, or no place for the new id. */
    KST_ERROR_UNKNOWN_PARENT = -3,
    /* There is no such object. */
    KST_ERROR_UNKNOWN_OBJECT = -4,
    /* An argument is out of range, a required pointer is null, or memory or ids do not suffice. */
    KST_ERROR_ARGUMENT = -5,
    /* A group would move into its own subtree, or two groups of a query share a group. */
    KST_ERROR_OVERLAP = -6,
    /* There is no such label. */
    KST_ERROR_UNKNOWN_LABEL = -7,
    /* Another object or group has this label. */
    KST_ERROR_LABEL_IN_USE = -8,
    /* A file is missing or cannot be read. */
    KST_ERROR_FILE = -9,
    /* There is no display, or it stands still. */
    KST_ERROR_NOT_RENDERING = -10,
    /* A group would be cloned, with all below it, into its own subtree. */
    KST_ERROR_CLONE_INTO_ITSELF = -11,
    /* The view's window is not open. */
    KST_ERROR_VIEW_NOT_OPEN = -12,
    /* The groups do not touch, so there is no depth. */
    KST_ERROR_NO_COLLISION = -13,
    /* The group takes no part in collisions. */
    KST_ERROR_NOT_CAPABLE = -14,
    /* A key state is earlier than the last one. */
    KST_ERROR_TIME_ORDER = -16,
    /* Key states move the group or object, so it cannot be placed directly. */
    KST_ERROR_ANIMATED = -17
} KstCode;

/* What KST_GetObjectType gives. */
typedef enum KstObjectType {
    KST_BOX = 1,
    KST_SPHERE = 2,
    KST_CYLINDER = 3,
    KST_CONE = 4,
    KST_TRIANGLES = 5,
    KST_POLYGON = 6,
    KST_POLYGON_GROUP = 7,
    KST_POLYLINE = 8,
    KST_TETRAHEDRON = 9
} KstObjectType;

/* Bits for KST_SetViewOptions. */
typedef enum KstViewOption {
    KST_COMPASS_ON = 1,
    KST_COMPASS_OFF = 2,
    KST_GRID_ON = 4,
    KST_GRID_OFF = 8,
    KST_PERSPECTIVE = 16,
    KST_ORTHOGONAL = 32,
    KST_STATUS_ON = 64,
    KST_STATUS_OFF = 128,
    KST_BACKFACE_CULLING_ON = 256,
    KST_BACKFACE_CULLING_OFF = 512
} KstViewOption;

/* What KST_GetGroup fills. */
typedef struct KstGroupInfo {
    int childCount;        /* groups directly below */
    int objectCount;       /* objects directly in the group */
    bool visibleInView[4]; /* for views 0 to 3 */
    bool colCheck;         /* the group has collision capability */
} KstGroupInfo;

/* One word of a KstObjectInfo; which member holds depends on the shape. */
typedef union KstWord {
    float f;
    int i;
    float* floats; /* allocated with malloc; the host's to free; never null */
    int* ints;     /* the same */
} KstWord;

/*
 * What KST_GetObject fills. Words of no meaning are 0.
 *
 *   shape          p1                     p2                        p3
 *   box            f width (x)            f height (y)              f depth (z)
 *   sphere         f radius
 *   cylinder       f radius               f height
 *   cone           f radius               f height
 *   triangles      i triangles            floats, 9 per triangle
 *   polygon        i vertices             floats, 3 per vertex
 *   polygon group  i polygons             ints, vertices of each    floats, 3 per vertex
 *   polyline       i lines                ints, vertices of each    floats, 3 per vertex
 *   tetrahedron    floats, 12: corners
 *
 * Vertices are in the object's own frame. Corners of a tetrahedron come as they are kept: where
 * they were given left-handed, the second and third have changed places.
 */
typedef struct KstObjectInfo {
    int groupId;      /* the group that the object is in */
    float matrix[16]; /* from the object's own frame to the world */
    KstWord p1;
    KstWord p2;
    KstWord p3;
} KstObjectInfo;

/* One finding of a query: nine 32-bit words. What has no meaning for a query is 0. */
typedef struct KstCollisionResult {
    int id1;         /* an object */
    int id2;         /* the other object */
    float point1[3]; /* on the object id1, in the world */
    float point2[3]; /* on the object id2, in the world */
    float value;     /* a distance or a depth, not below 0; -1 if the query gives neither */
} KstCollisionResult;

/*
 * Told, on the display's own thread, of an object that the user picked: its id, and three floats
 * with the point in the world, valid during the call. It may call any function; those that wait for
 * a picture or for the end of the display (KST_ShowView, KST_HideView, KST_ScreenCapture, KST_End)
 * return KST_ERROR_NOT_RENDERING there. Inside the callback KST_GetResults gives the findings of
 * the pick, and afterwards again those of the last query.
 *
 * Calls of other threads wait until it returns. So it must not wait for a thread that may be in a
 * call, nor take a lock that a thread holds around calls, and no exception may leave it.
 */
typedef void (*KstSelectCallback)(int objectId, float* point);

/* ---- Start and stop -------------------------------------------------------------------------- */

/*
 * Starts the library with an empty scene: the root group alone, ids from 0.
 *
 * visualise         Open a display. Where none can be opened, or the library has none, it runs
 *                   headless and everything but the display works.
 * showPanel         Show the control panel; counts only with visualise.
 * showTimeControls  The panel in full, with list of views and time slider.
 *
 * KST_OK also if the library runs already; the scene then stays as it is. KST_ERROR_ARGUMENT only
 * for lack of memory.
 */
KST_API int KST_Initialisation(bool visualise, bool showPanel, bool showTimeControls);

/*
 * Ends the library: the scene, the views and the windows go, and the user's settings are stored.
 * KST_OK, or not initialised. KST_Initialisation may follow.
 */
KST_API int KST_End(void);

/*
 * Let the display stand still while much changes, and go on; calls do not count, one resume ends
 * it. When the first returns, no picture is being drawn. The scene can be changed and queried
 * meanwhile. KST_ERROR_NOT_RENDERING if there is no display, as in every headless run.
 */
KST_API int KST_SuspendVisualisation(void);
KST_API int KST_ResumeVisualisation(void);

/* ---- Views ----------------------------------------------------------------------------------- */

/*
 * Four views look at the scene. View 0, the main view, has its window open as long as there is a
 * display; views 1 to 3 open and close on request. A view keeps its settings while it is closed.
 */

/*
 * Opens the window of view 1, 2 or 3. A view that is open stays as it is, title included.
 *
 * title  Of the window, copied; null keeps the present one.
 *
 * KST_ERROR_ARGUMENT unless view is 1 to 3. KST_ERROR_NOT_RENDERING for a closed view while the
 * display is suspended, or if no window can be had. Headless: the title is kept.
 */
KST_API int KST_ShowView(int view, const char* title);

/*
 * Closes the window of view 1, 2 or 3; a view that is closed stays so.
 *
 * KST_ERROR_ARGUMENT unless view is 1 to 3. KST_ERROR_NOT_RENDERING while the display is suspended.
 * Headless: no effect.
 */
KST_API int KST_HideView(int view);

/*
 * Switches what a view shows and how.
 *
 * view     0 to 3; open or closed.
 * options  A sum of KstViewOption. They are carried out in the order compass, grid, status text,
 *          backface culling, projection, on before off; a view that becomes orthogonal loses its
 *          compass. Other bits mean nothing.
 *
 * KST_ERROR_ARGUMENT unless view is 0 to 3. Headless: no effect.
 */
KST_API int KST_SetViewOptions(int view, int options);

/*
 * Puts the camera of a view at a place, looking at a point.
 *
 * view   0 to 3.
 * eye    Where the camera is.
 * point  Where it looks, and what it turns about. A point closer to the eye than half the view's
 *        speed of navigation is moved away from it to that distance.
 * up     The direction that is up in the picture; any length but 0.
 *
 * KST_ERROR_ARGUMENT unless view is 0 to 3; KST_ERROR_VIEW_NOT_OPEN. Headless: no effect.
 */
KST_API int KST_SetViewParams(int view, float eyeX, float eyeY, float eyeZ, float pointX,
                              float pointY, float pointZ, float upX, float upY, float upZ);

/*
 * Tells where the camera of a view is, in the terms of KST_SetViewParams. up has length 1, unless
 * it was given as something that has none. During a flight point stays where it was.
 *
 * view        0 to 3.
 * eye, point  Places for one float each; not null.
 * up          Places for one float each; nothing is written to them if any is null.
 *
 * KST_ERROR_ARGUMENT unless view is 0 to 3; KST_ERROR_VIEW_NOT_OPEN. Headless: nothing is written.
 */
KST_API int KST_GetViewParams(int view, float* eyeX, float* eyeY, float* eyeZ, float* pointX,
                              float* pointY, float* pointZ, float* upX, float* upY, float* upZ);

/*
 * Adds a key state to the flight of a view: where its camera is at one time. The view follows from
 * the next KST_SetTime.
 *
 * view            0 to 3; open or closed.
 * time            Not before the last key state of the view; the order is not tested.
 * eye, point, up  Three floats each, in the terms of KST_SetViewParams. Null: as in the last key
 *                 state, and in the first one as the camera is now. For point that is the
 *                 direction; for up what was kept of it, which is at a right angle to the
 *                 direction there. A camera that is to stay level is given up each time.
 *
 * KST_ERROR_ARGUMENT unless view is 0 to 3. Headless: KST_OK whatever the arguments, no effect.
 */
KST_API int KST_AddViewKeyState(int view, float time, const float* eye, const float* point,
                                const float* up);

/*
 * Lets the flight of a view repeat, or not.
 *
 * KST_ERROR_ARGUMENT unless view is 0 to 3. Headless: KST_OK whatever the arguments, no effect.
 */
KST_API int KST_SetViewCyclic(int view, bool cyclic);

/*
 * Ends the flight of a view; the camera stays where it is.
 *
 * KST_ERROR_ARGUMENT unless view is 0 to 3. Headless: no effect.
 */
KST_API int KST_ClearViewKeyStates(int view);

/*
 * Sets the background colour of a view.
 *
 * KST_ERROR_ARGUMENT unless r, g and b lie in [0, 1] and view is 0 to 3. Headless: no effect.
 */
KST_API int KST_SetBackgroundColor(int view, float r, float g, float b);

/*
 * Writes what the window of a view shows, brought up to date, to a BMP file: its drawing area,
 * without frame, 32 bits a pixel. What covers the window does not matter.
 *
 * fileName  Is replaced if it exists; not null.
 *
 * KST_ERROR_ARGUMENT unless view is 0 to 3; KST_ERROR_VIEW_NOT_OPEN; KST_ERROR_NOT_RENDERING while
 * the display is suspended. KST_OK also if the file cannot be written. Headless: KST_OK whatever
 * the arguments, no effect.
 */
KST_API int KST_ScreenCapture(int view, const char* fileName);

/* ---- Groups ---------------------------------------------------------------------------------- */

/*
 * Unless said otherwise an id of a group that is unknown gives KST_ERROR_UNKNOWN_GROUP, and so does
 * 0, the root group. Pointers are tested last.
 */

/*
 * Makes a group. It stands at its parent's origin, is visible in the views where its parent is, and
 * draws its objects red.
 *
 * newId      Receives the id.
 * parent     The group above; 0 is allowed.
 * colCheck   The group has collision capability.
 * label      If another group or object has it, "_1" is added, or "_2", ...; null or empty for
 *            none.
 * collapsed  The group's row in the panel starts closed.
 *
 * KST_ERROR_UNKNOWN_PARENT if newId is null or there is no such parent.
 */
KST_API int KST_CreateGroup(int* newId, int parent, bool colCheck, const char* label,
                            bool collapsed);

/* Destroys a group with all groups and objects below it. KST_ERROR_UNKNOWN_GROUP. */
KST_API int KST_DestroyGroup(int id);

/*
 * Destroys all groups and objects below a group; the group stays. 0 is allowed.
 * KST_ERROR_UNKNOWN_GROUP.
 */
KST_API int KST_EmptyGroup(int id);

/*
 * Puts a group, with all below it, under another parent. It keeps its place relative to the parent,
 * so its place in the world changes with the parent's.
 *
 * newParent  0 is allowed.
 *
 * KST_ERROR_UNKNOWN_GROUP for either; KST_ERROR_OVERLAP if newParent is the group or lies below it.
 */
KST_API int KST_MoveGroup(int id, int newParent);

/*
 * Sets the position of a group's origin in its parent's frame. KST_ERROR_UNKNOWN_GROUP;
 * KST_ERROR_ANIMATED.
 */
KST_API int KST_SetGroupPosition(int id, float x, float y, float z);

/*
 * Turns a group: by z about the z axis, then by x about the x axis, then by y about the y axis, all
 * axes those of its parent. Replaces a former orientation.
 *
 * x, y, z  Radians in [0, 6.2831855].
 *
 * KST_ERROR_UNKNOWN_GROUP; KST_ERROR_ANIMATED; KST_ERROR_ARGUMENT for an angle out of range.
 */
KST_API int KST_SetGroupOrientation(int id, float x, float y, float z);

/*
 * Scales a group, with the places and shapes of all below it, along its own axes, before it is
 * turned and placed. Replaces a former scale.
 *
 * x, y, z  Factors, not below 0.
 *
 * KST_ERROR_UNKNOWN_GROUP; KST_ERROR_ANIMATED; KST_ERROR_ARGUMENT for a factor below 0.
 */
KST_API int KST_SetGroupScaling(int id, float x, float y, float z);

/*
 * Turns a group by a quaternion, w its scalar part; it need not have length 1, and
 * with length 0 turns nothing. Replaces a former
 * orientation. KST_ERROR_UNKNOWN_GROUP; KST_ERROR_ANIMATED.
 */
KST_API int KST_SetGroupQuaternion(int id, float x, float y, float z, float w);

/*
 * Makes a surface of a group, and of the objects directly in it, a colour. Objects made in the
 * group later take it too.
 *
 * r, g, b, a    Red, green, blue and opacity in [0, 1].
 * recursive     Reach all groups and objects below as well.
 * surfaceIndex  0 or 1: each group and object has two surfaces, of which one is shown.
 *
 * KST_ERROR_UNKNOWN_GROUP; KST_ERROR_ARGUMENT for a colour out of range, then for surfaceIndex.
 * Headless: KST_OK whatever the arguments, no effect.
 */
KST_API int KST_SetGroupColor(int id, float r, float g, float b, float a, bool recursive,
                              int surfaceIndex);

/*
 * Makes a surface of a group, and of the objects directly in it, a texture. Polygons, triangles,
 * tetrahedra and polylines cannot show it.
 *
 * id            0 is allowed.
 * texture       0 to 99, as given to KST_LoadTexture.
 * xTile, yTile  How often it repeats; above 0.
 * recursive     Reach all groups and objects below as well.
 * surfaceIndex  0 or 1.
 *
 * KST_ERROR_ARGUMENT for texture or a tile factor; KST_ERROR_UNKNOWN_GROUP; KST_ERROR_ARGUMENT for
 * surfaceIndex. Headless: KST_OK whatever the arguments, no effect.
 */
KST_API int KST_SetGroupTexture(int id, int texture, float xTile, float yTile, bool recursive,
                                int surfaceIndex);

/*
 * Shows surface 0 or 1 on all objects below a group.
 *
 * recursive  Objects made later in the groups below start with this surface too, not only those
 *            made in the group itself.
 *
 * KST_ERROR_UNKNOWN_GROUP; KST_ERROR_ARGUMENT for surfaceIndex. Headless: no effect.
 */
KST_API int KST_SetGroupActiveSurface(int id, bool recursive, int surfaceIndex);

/*
 * Gives a group collision capability or takes it. Reaches the objects directly in the group, not
 * the groups below. Clearances of the objects are lost when it is taken. KST_ERROR_UNKNOWN_GROUP.
 */
KST_API int KST_SetGroupCollisionCheckCapability(int id, bool on);

/*
 * Grows all objects below a group, those of capable groups, by a margin in all directions, for all
 * queries. Objects made later have none. Nothing happens if the group itself is not capable.
 *
 * margin  In units of the world, not below 0; 0 takes a margin back.
 *
 * KST_ERROR_UNKNOWN_GROUP; KST_ERROR_ARGUMENT for a margin below 0.
 */
KST_API int KST_SetGroupClearance(int id, float margin);

/*
 * Shows or hides a group, with all below it, in one view. A new group is shown where its parent
 * is. The root group is shown in view 0 alone, so for the other views each group below it is shown
 * by a call of this function.
 *
 * view  0 to 3.
 *
 * KST_ERROR_UNKNOWN_GROUP; KST_ERROR_ARGUMENT for view. Headless: no effect.
 */
KST_API int KST_SetGroupVisibility(int id, int view, bool visible);

/*
 * Adds a key state to the motion of a group: its pose and scale at one time. From then on the group
 * is animated: it goes where its key states say for the time of KST_SetTime, between two of them on
 * the straight line and the shortest turn, before the first and after the last standing still (a
 * cyclic motion repeats there too), and it cannot be placed directly. It takes its pose for the
 * present time at once.
 *
 * time          Not before the group's last key state; equal times make a jump. After
 *               KST_SetGroupCyclic alone: not below 0.
 * pos           Three floats: position.
 * orient        Three angles as for KST_SetGroupOrientation or, with isQuaternion, four floats x,
 *               y, z, w.
 * scale         Three floats: factors, of any sign.
 * isQuaternion  How to read orient.
 *
 * Each of the three arrays may be null: as in the last key state, in the first one as the group
 * stands now.
 *
 * KST_ERROR_ARGUMENT for an angle out of range; KST_ERROR_UNKNOWN_GROUP; KST_ERROR_TIME_ORDER.
 */
KST_API int KST_AddGroupKeyState(int id, float time, const float* pos, const float* orient,
                                 const float* scale, bool isQuaternion);

/*
 * Lets the motion of a group repeat from its first to its last key state, or not. May come before
 * the key states; takes effect at the next KST_SetTime. KST_ERROR_UNKNOWN_GROUP.
 */
KST_API int KST_SetGroupCyclic(int id, bool cyclic);

/*
 * Ends the motion of a group: its key states and its cyclic flag go, it stays where it is, and can
 * be placed directly again. Nothing happens to a group without key states: a cyclic flag set before
 * them stays. KST_ERROR_UNKNOWN_GROUP.
 */
KST_API int KST_ClearGroupKeyStates(int id);

/*
 * Copies a group, and the objects directly in it, under a parent. The copy has the pose, scale,
 * looks and visibility of the source, but no motion and no clearance. Copies of objects have the
 * labels of their sources; such a label then means the newest copy. When one of those that share a
 * label is destroyed, the label means nothing, and is free again.
 *
 * newId         Receives the id of the copy.
 * source        0 is allowed.
 * targetParent  0 is allowed, and so is the source or a group below it.
 * colCheck      The copy has collision capability.
 * label         As for KST_CreateGroup.
 *
 * KST_ERROR_UNKNOWN_GROUP for source; KST_ERROR_UNKNOWN_PARENT for targetParent; KST_ERROR_ARGUMENT
 * if newId is null.
 */
KST_API int KST_CloneGroup(int* newId, int source, int targetParent, bool colCheck,
                           const char* label);

/*
 * Copies a group with all groups and objects below it, as KST_CloneGroup does. The copies of groups
 * have no collision capability, and no labels but those given here; copies of objects have those of
 * their sources.
 *
 * newIds  Receives, at i, the id of the copy of the group ids[i]; entries for groups that are not
 *         copied stay as they are. Of ids that occur twice the first counts.
 * count   Entries in ids, newIds and labels; 0 is allowed, and the arrays may then be null.
 * labels  Labels of the copies; null, or null in it, for none.
 *
 * KST_ERROR_UNKNOWN_GROUP for source or targetParent; KST_ERROR_CLONE_INTO_ITSELF if targetParent
 * is the source or lies below it; KST_ERROR_ARGUMENT for a count below 0 or a null newIds or ids.
 */
KST_API int KST_CloneGroupRecursive(int* newIds, int source, int targetParent, int count,
                                    const int* ids, const char** labels);

/* Tells counts, visibility and capability of a group. 0 is allowed. KST_ERROR_UNKNOWN_GROUP. */
KST_API int KST_GetGroup(int id, KstGroupInfo* info);

/*
 * Tell the id of one of the groups directly below a group, or of one of the objects directly in it.
 *
 * id     0 is allowed.
 * index  From 0 to the count of KST_GetGroup less 1, in ascending order of the ids. The time that a
 *        call takes grows with it.
 *
 * KST_ERROR_UNKNOWN_GROUP; KST_ERROR_ARGUMENT for index.
 */
KST_API int KST_GetGroupChildID(int id, int index, int* childId);
KST_API int KST_GetGroupObjectID(int id, int index, int* objectId);

/* ---- Objects --------------------------------------------------------------------------------- */

/*
 * An id of an object that is unknown gives KST_ERROR_UNKNOWN_OBJECT. 0 is an object like any other.
 */

/* Destroys an object. KST_ERROR_UNKNOWN_OBJECT. */
KST_API int KST_DestroyObject(int id);

/*
 * Puts an object into another group. It keeps its place relative to the group, and takes part in
 * queries if and as the new group does.
 *
 * KST_ERROR_UNKNOWN_OBJECT; KST_ERROR_UNKNOWN_GROUP if group is unknown or 0.
 */
KST_API int KST_MoveObject(int id, int group);

/*
 * Sets the position of an object's origin in its group's frame. KST_ERROR_UNKNOWN_OBJECT;
 * KST_ERROR_ANIMATED.
 */
KST_API int KST_SetObjectPosition(int id, float x, float y, float z);

/*
 * Turns an object, as KST_SetGroupOrientation turns a group.
 *
 * KST_ERROR_UNKNOWN_OBJECT; KST_ERROR_ANIMATED; KST_ERROR_ARGUMENT for an angle out of range.
 */
KST_API int KST_SetObjectOrientation(int id, float x, float y, float z);

/*
 * Scales an object along its own axes, as KST_SetGroupScaling scales a group.
 *
 * KST_ERROR_UNKNOWN_OBJECT; KST_ERROR_ANIMATED; KST_ERROR_ARGUMENT for a factor below 0.
 */
KST_API int KST_SetObjectScaling(int id, float x, float y, float z);

/*
 * Turns an object, as KST_SetGroupQuaternion turns a group. KST_ERROR_UNKNOWN_OBJECT;
 * KST_ERROR_ANIMATED.
 */
KST_API int KST_SetObjectQuaternion(int id, float x, float y, float z, float w);

/*
 * Makes a surface of an object a colour. Polylines do not show it.
 *
 * r, g, b, a    Red, green, blue and opacity in [0, 1].
 * surfaceIndex  0 or 1.
 *
 * KST_ERROR_UNKNOWN_OBJECT; KST_ERROR_ARGUMENT for a colour, then for surfaceIndex. Headless: no
 * effect.
 */
KST_API int KST_SetObjectColor(int id, float r, float g, float b, float a, int surfaceIndex);

/*
 * Makes a surface of an object a texture. Only boxes, spheres, cylinders, cones and polygon groups
 * show it.
 *
 * texture       0 to 99, as given to KST_LoadTexture.
 * xTile, yTile  How often it repeats; above 0.
 * surfaceIndex  0 or 1.
 *
 * KST_ERROR_UNKNOWN_OBJECT; KST_ERROR_ARGUMENT for a tile factor, then for surfaceIndex, then for
 * texture. Headless: no effect.
 */
KST_API int KST_SetObjectTexture(int id, int texture, float xTile, float yTile, int surfaceIndex);

/*
 * Shows surface 0 or 1 on an object. KST_ERROR_UNKNOWN_OBJECT; KST_ERROR_ARGUMENT for surfaceIndex.
 * Headless: no effect.
 */
KST_API int KST_SetObjectActiveSurface(int id, int surfaceIndex);

/*
 * Grows an object by a margin in all directions, for all queries. Nothing happens unless its group
 * is capable.
 *
 * margin  In units of the world, not below 0; 0 takes a margin back.
 *
 * KST_ERROR_UNKNOWN_OBJECT; KST_ERROR_ARGUMENT for a margin below 0.
 */
KST_API int KST_SetObjectClearance(int id, float margin);

/*
 * Adds a key state to the motion of an object, as KST_AddGroupKeyState does for a group.
 *
 * KST_ERROR_ARGUMENT for an angle out of range; KST_ERROR_UNKNOWN_OBJECT; KST_ERROR_TIME_ORDER.
 */
KST_API int KST_AddObjectKeyState(int id, float time, const float* pos, const float* orient,
                                  const float* scale, bool isQuaternion);

/*
 * Lets the motion of an object repeat, as KST_SetGroupCyclic does for a group.
 * KST_ERROR_UNKNOWN_OBJECT.
 */
KST_API int KST_SetObjectCyclic(int id, bool cyclic);

/*
 * Ends the motion of an object, as KST_ClearGroupKeyStates does for a group; a cyclic flag goes in
 * any case.
 * KST_ERROR_UNKNOWN_OBJECT.
 */
KST_API int KST_ClearObjectKeyStates(int id);

/*
 * Tells the shape of an object.
 *
 * type  Receives one of KstObjectType.
 *
 * KST_ERROR_UNKNOWN_OBJECT.
 */
KST_API int KST_GetObjectType(int id, int* type);

/*
 * Tells group, place and shape of an object. The arrays in the record belong to the host from then
 * on. KST_ERROR_UNKNOWN_OBJECT.
 */
KST_API int KST_GetObject(int id, KstObjectInfo* info);

/* ---- Creation of objects --------------------------------------------------------------------- */

/*
 * group     Where the object goes; not 0.
 * x, y, z   Position of the object's origin in the group's frame.
 * vertices  Three floats each, in the group's frame.
 * newId     Receives the id; may be null.
 * label     Null or empty for none.
 *
 * KST_ERROR_ARGUMENT for a size below 0, a count too low, or a null array; KST_ERROR_UNKNOWN_GROUP
 * if group is unknown or 0; KST_ERROR_LABEL_IN_USE if another object or a group has the label.
 * Sizes may be 0. The object has its group's looks.
 */

/* A box with its middle at the origin; width along x, height along y, depth along z. */
KST_API int KST_CreateBox(int group, float width, float height, float depth, float x, float y,
                          float z, int* newId, const char* label);

/* A ball with its middle at the origin. */
KST_API int KST_CreateSphere(int group, float radius, float x, float y, float z, int* newId,
                             const char* label);

/* A solid cylinder along y, with the middle of its axis at the origin. */
KST_API int KST_CreateCylinder(int group, float radius, float height, float x, float y, float z,
                               int* newId, const char* label);

/* A solid cone along y, tip up, with the middle of its height at the origin. */
KST_API int KST_CreateCone(int group, float radius, float height, float x, float y, float z,
                           int* newId, const char* label);

/*
 * One flat convex polygon. One that is not flat or not convex counts as the convex hull of its
 * vertices.
 *
 * vertexCount  At least 3.
 */
KST_API int KST_CreatePolygon(int group, int vertexCount, const float* vertices, int* newId,
                              const char* label);

/*
 * A surface of triangles.
 *
 * triangleCount  At least 1.
 * vertices       9 floats per triangle.
 */
KST_API int KST_CreateTriangles(int group, int triangleCount, const float* vertices, int* newId,
                                const char* label);

/*
 * A surface of polygons, each as for KST_CreatePolygon.
 *
 * polygonCount  At least 1.
 * vertexCounts  The number of vertices of each polygon; none below 0.
 * vertices      Those of the first polygon, then those of the next, ...
 */
KST_API int KST_CreatePolygonGroup(int group, int polygonCount, const int* vertexCounts,
                                   const float* vertices, int* newId, const char* label);

/*
 * Open lines, for the eye alone: they take part in no query and have no surfaces.
 *
 * lineCount     At least 1.
 * vertexCounts  The number of vertices of each line; none below 0.
 * vertices      Those of the first line, then those of the next, ...
 */
KST_API int KST_CreatePolyline(int group, int lineCount, const int* vertexCounts,
                               const float* vertices, int* newId, const char* label);

/*
 * A solid tetrahedron.
 *
 * vertices  12 floats: the four corners, in any order.
 */
KST_API int KST_CreateTetrahedron(int group, const float* vertices, int* newId, const char* label);

/* ---- Queries --------------------------------------------------------------------------------- */

/*
 * A query reaches all objects below the groups that it names, those of capable groups. It leaves
 * its findings, in place of those of the last query, for KST_GetResults; they stay until the next
 * query or KST_End. They come in the order in which the objects entered the collision world: were
 * created in a capable group, moved into one, or found when capability was set. The same calls
 * give the same findings in the same order.
 *
 * all    False: stop at the first finding.
 * count  Receives the number of findings; not written unless the query succeeds.
 *
 * KST_ERROR_UNKNOWN_GROUP if a group is unknown or 0; KST_ERROR_NOT_CAPABLE if a group that is
 * named has no capability itself.
 */

/* Which objects of a group touch a point of the world? id1 is the object, value -1. */
KST_API int KST_CheckPointCollision(int group, float x, float y, float z, bool all, int* count);

/*
 * Which objects of a group touch the straight line from one point of the world to another? The
 * points may coincide. The difference of the two must be within the range of a float. id1 is the
 * object, value -1.
 */
KST_API int KST_CheckLineCollision(int group, float x1, float y1, float z1, float x2, float y2,
                                   float z2, bool all, int* count);

/*
 * Which objects of one group touch which of another? id1 and id2 are the two, value is -1. Of
 * objects directly in group1, id1 is theirs. Objects of one and the same group are not tested
 * against each other.
 *
 * As above, then KST_ERROR_OVERLAP if one group is the other or lies below it.
 */
KST_API int KST_CheckGroupCollision(int group1, int group2, bool all, int* count);

/*
 * How far apart are the objects of two groups? All pairs, id1 from group1 and id2 from group2, by
 * ascending distance, then by ids: value is the distance, point1 and point2 are a pair of closest
 * points. Of objects that touch, the distance is 0 and both points are one that they have in
 * common. Pairs that have no distance (polylines, objects of groups that are not capable, places
 * that are not finite) are left out. The time that it takes grows with the number of pairs.
 *
 * As above, then KST_ERROR_OVERLAP if one group is the other or lies below it; count is not written
 * then, and KST_GetResults, which would give the pairs found so far, is not to be called.
 */
KST_API int KST_GetClosestPairs(int group1, int group2, int* count);

/*
 * How deep are the objects of two groups in each other? The pairs of KST_CheckGroupCollision by
 * descending depth, then by ids: value is the depth, the length of the shortest way to part the
 * two; moving the object id1 by point2 - point1 does it. The depth of triangles, polygons and
 * polygon groups is that of the polygon that is deepest.
 *
 * As above, then KST_ERROR_OVERLAP, and KST_ERROR_NO_COLLISION if nothing touches.
 */
KST_API int KST_GetPenetrationDepths(int group1, int group2, int* count);

/*
 * Copies the findings of the last query.
 *
 * results  A place for as many KstCollisionResult as the query counted. Not null, also for none.
 */
KST_API int KST_GetResults(void* results);

/* ---- Labels, files and time ------------------------------------------------------------------ */

/*
 * Tells the id that a label stands for. Whether it is a group's or an object's the label does not
 * tell.
 *
 * id  Receives the id.
 *
 * KST_ERROR_UNKNOWN_LABEL, also for a null or empty label.
 */
KST_API int KST_GetID(int* id, const char* label);

/*
 * Reads a scene file into a group.
 *
 * fileName   The reader goes by the last four characters, in any case: ".xml"; ".wrl", a VRML97
 *            world, plain or packed by gzip; with any other nothing is read, and all is well.
 * group      0 is allowed for files whose objects are all in groups of their own.
 * errorText  May be null. Receives a text about a KST_ERROR_FILE that stays the library's and holds
 *            until the next load; with another code it means nothing.
 *
 * KST_ERROR_ARGUMENT if fileName is null; KST_ERROR_UNKNOWN_GROUP; KST_ERROR_FILE if a file is
 * missing, not well-formed or not valid, if files include each other in a ring, more than 64 deep,
 * or more than 4096 in all; else the code of the element that ended the reading. What was read
 * before a failure stays in the scene: give a load a group of its own to be able to take it back.
 *
 * An object that is refused is left out and the reading goes on; its code is returned only if it
 * was the last in its group or scene. So KST_OK does not say that all objects are there. An
 * orientation or scale out of range on an object, a colour out of range, and a key state out of
 * order give no code, nor does text that is no number, which reads as 0.
 *
 * Of a VRML97 world, each Transform makes a group, labelled by its DEF name and collision capable
 * if `group` is, and each Shape with a Box, Sphere, Cylinder, Cone, IndexedFaceSet or
 * IndexedLineSet an object; a Switch gives its chosen child, a Viewpoint the position of view 0,
 * and all else is passed over with what is below it. KST_ERROR_FILE with a text also for an
 * Extrusion, a face set that is not convex, an index without a point, and a texture that is no
 * ".ppm" file or cannot be loaded; without a text for a file that cannot be opened or holds no
 * node.
 */
KST_API int KST_LoadScene(const char* fileName, int group, char** errorText);

/*
 * Loads a picture of the form PPM into a place of the palette, for KST_SetGroupTexture and
 * KST_SetObjectTexture. The file is read later; one that is no PPM leaves the place as it was. What
 * has the texture of an empty place is drawn in plain white.
 *
 * index  0 to 99.
 * alpha  Opacity of the whole picture in [0, 1].
 *
 * KST_ERROR_ARGUMENT for index, then for a null fileName; KST_ERROR_FILE if there is no such file.
 * Headless: KST_OK whatever the arguments, no effect.
 */
KST_API int KST_LoadTexture(int index, const char* fileName, float alpha);

/*
 * Sets the function that is told of objects that the user picks; null for none. KST_OK. Headless:
 * no effect.
 */
KST_API int KST_SetObjectSelectCallback(KstSelectCallback callback);

/*
 * Sets the time: all groups, objects and views with key states go where these say.
 *
 * time  Not below 0. It is 0 when the library is loaded; KST_End and KST_Initialisation keep it.
 *
 * KST_ERROR_ARGUMENT for a time below 0.
 */
KST_API int KST_SetTime(float time);

#ifdef __cplusplus
}
#endif

#endif
