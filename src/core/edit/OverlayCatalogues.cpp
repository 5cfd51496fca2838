#include "OverlayCatalogues.h"

namespace tarnby::edit {

namespace {

// In the order of the dialogs' lists.
constexpr CatalogueEntry TextStyleTable[] = {
    {"TEXTSTYLE_BLOCKSHADOW", 6},
    {"TEXTSTYLE_DROPSHADOW", 5},
    {"TEXTSTYLE_INSETEXTRAHEAVY", 9},
    {"TEXTSTYLE_INSETEXTRALIGHT", 8},
    {"TEXTSTYLE_INSETHEAVY", 2},
    {"TEXTSTYLE_INSETLIGHT", 1},
    {"TEXTSTYLE_MAX", 11},
    {"TEXTSTYLE_NORMAL", 0},
    {"TEXTSTYLE_OUTLINEBLOCK", 7},
    {"TEXTSTYLE_RAISEDEXTRAHEAVY", 11},
    {"TEXTSTYLE_RAISEDEXTRALIGHT", 10},
    {"TEXTSTYLE_RAISEDHEAVY", 4},
    {"TEXTSTYLE_RAISEDLIGHT", 3},
};

// Codes are the family times 1000 plus the variant; each _MAX entry repeats
// the code of its family's last variant, and REGION that of OTHER_MAX.
constexpr CatalogueEntry ShapeTable[] = {
    {"ARROW_B", 11003},
    {"ARROW_L", 11000},
    {"ARROW_MAX", 11014},
    {"ARROW_R", 11001},
    {"ARROW_T", 11002},
    {"ARROW2_L_AND_B", 11007},
    {"ARROW2_L_AND_R", 11004},
    {"ARROW2_L_AND_T", 11006},
    {"ARROW2_R_AND_B", 11009},
    {"ARROW2_R_AND_T", 11008},
    {"ARROW2_T_AND_B", 11005},
    {"ARROW3_L_AND_B_AND_R", 11012},
    {"ARROW3_L_AND_T_AND_B", 11013},
    {"ARROW3_L_AND_T_AND_R", 11010},
    {"ARROW3_T_AND_R_AND_B", 11011},
    {"ARROW4_L_AND_T_AND_R_AND_B", 11014},
    {"CIRCLE", 7000},
    {"CIRCLE_180_B", 7008},
    {"CIRCLE_180_L", 7005},
    {"CIRCLE_180_R", 7006},
    {"CIRCLE_180_T", 7007},
    {"CIRCLE_270_LB", 7010},
    {"CIRCLE_270_LT", 7009},
    {"CIRCLE_270_RB", 7012},
    {"CIRCLE_270_RT", 7011},
    {"CIRCLE_90_LB", 7002},
    {"CIRCLE_90_LT", 7001},
    {"CIRCLE_90_RB", 7004},
    {"CIRCLE_90_RT", 7003},
    {"CIRCLE_MAX", 7012},
    {"CROSS_LARGE", 10002},
    {"CROSS_MAX", 10002},
    {"CROSS_MEDIUM", 10001},
    {"CROSS_SMALL", 10000},
    {"DIAMOND", 6001},
    {"ELLIPSE", 8000},
    {"ELLIPSE_180_B", 8008},
    {"ELLIPSE_180_L", 8005},
    {"ELLIPSE_180_R", 8006},
    {"ELLIPSE_180_T", 8007},
    {"ELLIPSE_270_LB", 8010},
    {"ELLIPSE_270_LT", 8009},
    {"ELLIPSE_270_RB", 8012},
    {"ELLIPSE_270_RT", 8011},
    {"ELLIPSE_90_LB", 8002},
    {"ELLIPSE_90_LT", 8001},
    {"ELLIPSE_90_RB", 8004},
    {"ELLIPSE_90_RT", 8003},
    {"ELLIPSE_MAX", 8012},
    {"HEXAGON", 6003},
    {"LINE", 6004},
    {"OCTAGON", 6000},
    {"OTHER_MAX", 6005},
    {"PARALLELOGRAM_B", 3003},
    {"PARALLELOGRAM_L", 3000},
    {"PARALLELOGRAM_MAX", 3003},
    {"PARALLELOGRAM_R", 3001},
    {"PARALLELOGRAM_T", 3002},
    {"PENTAGON", 6002},
    {"RECTANGLE", 2000},
    {"RECTANGLE_MAX", 2001},
    {"RECTANGLE_ROUNDED", 2001},
    {"REGION", 6005},
    {"SQUARE", 1000},
    {"SQUARE_MAX", 1001},
    {"SQUARE_ROUNDED", 1001},
    {"STAR_MAX", 9005},
    {"STAR16", 9003},
    {"STAR24", 9004},
    {"STAR32", 9005},
    {"STAR4", 9000},
    {"STAR5", 9001},
    {"STAR8", 9002},
    {"TRAPEZOID_B", 4003},
    {"TRAPEZOID_L", 4000},
    {"TRAPEZOID_MAX", 4003},
    {"TRAPEZOID_R", 4001},
    {"TRAPEZOID_T", 4002},
    {"TRIANGLE_EQUILATERAL_B", 5003},
    {"TRIANGLE_EQUILATERAL_L", 5000},
    {"TRIANGLE_EQUILATERAL_R", 5001},
    {"TRIANGLE_EQUILATERAL_T", 5002},
    {"TRIANGLE_ISOSCELES_B", 5007},
    {"TRIANGLE_ISOSCELES_L", 5004},
    {"TRIANGLE_ISOSCELES_R", 5005},
    {"TRIANGLE_ISOSCELES_T", 5006},
    {"TRIANGLE_MAX", 5011},
    {"TRIANGLE_RIGHT_LB", 5009},
    {"TRIANGLE_RIGHT_LT", 5008},
    {"TRIANGLE_RIGHT_RB", 5011},
    {"TRIANGLE_RIGHT_RT", 5010},
};

std::optional<int> codeIn(std::span<const CatalogueEntry> table, const QString &name)
{
    for (const CatalogueEntry &entry : table) {
        if (name.compare(QLatin1String(entry.name), Qt::CaseInsensitive) == 0)
            return entry.code;
    }
    return std::nullopt;
}

} // namespace

std::span<const CatalogueEntry> textStyles()
{
    return TextStyleTable;
}

std::span<const CatalogueEntry> shapes()
{
    return ShapeTable;
}

std::optional<int> textStyleCode(const QString &name)
{
    return codeIn(TextStyleTable, name);
}

std::optional<int> shapeCode(const QString &name)
{
    return codeIn(ShapeTable, name);
}

} // namespace tarnby::edit
