#include "Failure.h"

#include "kestrane.h"

std::string CodeText(int code) {
    switch (code) {
        case KST_OK:
            return "no error";
        case KST_ERROR_NOT_INITIALISED:
            return "the library is not initialised";
        case KST_ERROR_UNKNOWN_GROUP:
            return "no such group";
        case KST_ERROR_UNKNOWN_PARENT:
            return "no such parent group";
        case KST_ERROR_UNKNOWN_OBJECT:
            return "no such object";
        case KST_ERROR_ARGUMENT:
            return "a value is out of range";
        case KST_ERROR_OVERLAP:
            return "the two groups share a group: they are the same, or one lies within the other";
        case KST_ERROR_UNKNOWN_LABEL:
            return "no such label";
        case KST_ERROR_LABEL_IN_USE:
            return "the label of an object is used twice";
        case KST_ERROR_FILE:
            return "the file cannot be read";
        case KST_ERROR_NOT_RENDERING:
            return "there is no display";
        case KST_ERROR_CLONE_INTO_ITSELF:
            return "a group cannot be copied into itself";
        case KST_ERROR_VIEW_NOT_OPEN:
            return "the view is not open";
        case KST_ERROR_NO_COLLISION:
            return "there is no collision";
        case KST_ERROR_NOT_CAPABLE:
            return "the group has no collision capability";
        case KST_ERROR_TIME_ORDER:
            return "the key states of a motion are not in ascending order of time";
        case KST_ERROR_ANIMATED:
            return "what has key states cannot be moved directly";
        default:
            return "unknown error code " + std::to_string(code);
    }
}

void Require(int code, const std::string& context) {
    if (code != KST_OK)
        throw Failure(context + ": " + CodeText(code));
}
