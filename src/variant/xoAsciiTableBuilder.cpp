// The builder's public members. The content is made at the first change, so that an empty builder allocates nothing.
#include "xoSystem/xoAsciiTableBuilder.h"

#include <algorithm>

#include "variant/tableContent.h"
#include "variant/tableLayout.h"

namespace xo {

AsciiTableBuilder::AsciiTableBuilder(const std::vector<std::string>& titles) {
    auto& columns = content().columns;
    columns.resize((std::min)(titles.size(), kMaxColumns));
    for (std::size_t i = 0; i != columns.size(); ++i) columns[i].title = titles[i];
}

AsciiTableBuilder::AsciiTableBuilder(const AsciiTableBuilder& other)
    : mContent(other.mContent ? std::make_unique<variant::TableContent>(*other.mContent) : nullptr) {}

AsciiTableBuilder::AsciiTableBuilder(AsciiTableBuilder&& other) noexcept = default;

// The copy is complete before this builder changes, which also makes the assignment to itself safe.
AsciiTableBuilder& AsciiTableBuilder::operator=(const AsciiTableBuilder& other) {
    return *this = AsciiTableBuilder(other);
}

AsciiTableBuilder& AsciiTableBuilder::operator=(AsciiTableBuilder&& other) noexcept = default;

AsciiTableBuilder::~AsciiTableBuilder() = default;

// For members that change the content. The others treat a missing one as empty.
variant::TableContent& AsciiTableBuilder::content() {
    if (!mContent) mContent = std::make_unique<variant::TableContent>();
    return *mContent;
}

AsciiTableBuilder::Column& AsciiTableBuilder::editColumn(std::size_t index) {
    // The caller gets a reference in any case. Without the limit, a single wrong index could use up the memory.
    index = (std::min)(index, kMaxColumns - 1);
    auto& columns = content().columns;
    if (columns.size() <= index) columns.resize(index + 1);
    return columns[index];
}

AsciiTableBuilder& AsciiTableBuilder::addRow(std::initializer_list<xoVariant> cells) {
    content().addRow(cells.begin(), cells.size());
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::addRow(const std::vector<xoVariant>& cells) {
    content().addRow(cells.data(), cells.size());
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::addRow(const std::vector<std::string>& cells) {
    content().addRow(cells.data(), cells.size());
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::addSeparator() {
    content().wantsRule = true;  // drawn once there is a next row
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::setStyle(Style style) {
    content().style = style;
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::setMaxWidth(unsigned columns) {
    content().maxWidth = columns;
    return *this;
}

AsciiTableBuilder& AsciiTableBuilder::setRowLines(bool on) {
    content().hasRowLines = on;
    return *this;
}

// The layout reads the content only, so that build() may be called again after further rows.
std::string AsciiTableBuilder::build() const { return mContent ? variant::layOut(*mContent) : std::string(); }

AsciiTableBuilder AsciiTableBuilder::FromMap(const xoVariant::xoVariantMapImpl& map) {
    // Without flattening, a map inside would be one cell with the text form of that map.
    xoVariant::xoVariantMapImpl leaves;
    map.toFlattenMap(leaves, '/');
    AsciiTableBuilder table({"Key", "Value"});
    for (const auto& [key, value] : leaves) table.addRow({key, value});
    return table;
}

AsciiTableBuilder AsciiTableBuilder::FromList(const xoVariant::xoVariantListImpl& list) {
    const auto isMap = [](const xoVariant& element) { return element.getType() == xoVariant::MAP; };
    AsciiTableBuilder table;
    // The first column is kept for elements that are not maps, if there are any.
    const std::size_t firstKey = std::all_of(list.begin(), list.end(), isMap) ? 0 : 1;
    if (firstKey != 0) table.editColumn(0);

    // Columns are in the order in which their keys first occur.
    std::map<std::string, std::size_t, std::less<>> columnOfKey;
    std::vector<xoVariant> cells;
    for (const xoVariant& element : list) {
        cells.clear();
        if (!isMap(element)) {
            table.addRow({element});
            continue;
        }
        xoVariant::xoVariantMapImpl leaves;
        element.getMap().toFlattenMap(leaves, '/');
        for (auto& [key, value] : leaves) {
            const auto [place, isNew] = columnOfKey.try_emplace(key, firstKey + columnOfKey.size());
            const std::size_t column = place->second;
            // addRow would ignore the cell too, but editColumn would rename the last column.
            if (column >= kMaxColumns) continue;
            if (isNew) table.editColumn(column).title = key;
            if (cells.size() <= column) cells.resize(column + 1);
            cells[column] = std::move(value);
        }
        table.addRow(cells);
    }
    return table;
}

AsciiTableBuilder AsciiTableBuilder::FromRows(const std::vector<std::vector<xoVariant>>& rows, bool firstRowIsTitles) {
    std::vector<std::string> titles;  // without any, the rows alone make the columns
    const bool hasTitles = firstRowIsTitles && !rows.empty();
    if (hasTitles)
        for (const xoVariant& cell : rows.front()) titles.push_back(cell.toString());
    AsciiTableBuilder table(titles);
    for (std::size_t i = hasTitles ? 1 : 0; i < rows.size(); ++i) table.addRow(rows[i]);
    return table;
}

}  // namespace xo
