#include "ui/frame/DocumentWindow.h"

namespace tarnby::ui {

void invokeDocumentOperation(DocumentWindow &window, commands::DocumentOperation op)
{
    switch (op) {
#define TARNBY_CALL_OPERATION(opName, name)                                                        \
    case commands::DocumentOperation::opName:                                                      \
        window.name();                                                                             \
        return;
        TARNBY_DOCUMENT_OPERATIONS(TARNBY_CALL_OPERATION)
#undef TARNBY_CALL_OPERATION
    }
}

} // namespace tarnby::ui
