#pragma once

#include <QString>

#include <optional>
#include <span>

// The fixed lists of the text and shape dialogs: each entry's visible name
// (the constant name) and the effect or shape code stored with it, in list
// order. Some codes appear twice (a family's _MAX entry repeats its last
// variant); both entries are kept, and equal codes draw the same.
namespace tarnby::edit {

struct CatalogueEntry {
    const char *name;
    int code;
};

// The 13 text effects, TEXTSTYLE_BLOCKSHADOW (6) to TEXTSTYLE_RAISEDLIGHT (3).
std::span<const CatalogueEntry> textStyles();
// The 91 shapes, ARROW_B (11003) to TRIANGLE_RIGHT_RT (5010).
std::span<const CatalogueEntry> shapes();

// The code of the entry of that name, ignoring case; nothing for a name not
// in the list.
std::optional<int> textStyleCode(const QString &name);
std::optional<int> shapeCode(const QString &name);

} // namespace tarnby::edit
