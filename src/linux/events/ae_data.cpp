#include "linux/events/ae_data.h"

#include <cstring>

namespace quillon {

AEData::~AEData() {
    for (AEItem &item : items)
        AEDisposeDesc(&item.value);
    AEDisposeDesc(&target);
}

AEDesc ae_copy(const AEDesc &desc) {
    AEDesc copy{desc.descriptorType, nullptr};
    if (!desc.data)
        return copy;
    copy.data = new AEData;
    copy.data->bytes = desc.data->bytes;
    copy.data->event_class = desc.data->event_class;
    copy.data->event_id = desc.data->event_id;
    copy.data->target = ae_copy(desc.data->target);
    for (const AEItem &item : desc.data->items)
        copy.data->items.push_back({item.keyword, ae_copy(item.value), item.known});
    return copy;
}

void ae_append(AEDesc *desc, OSType keyword, AEDesc value) {
    desc->data->items.push_back({keyword, value, false});
}

void ae_make_record(AEDesc *desc, OSType event_class, OSType event_id) {
    AEDisposeDesc(desc);
    desc->descriptorType = typeAppleEvent;
    desc->data = new AEData;
    desc->data->event_class = event_class;
    desc->data->event_id = event_id;
}

OSErr AECreateDesc(OSType type, const void *data, std::size_t size, AEDesc *result) {
    result->descriptorType = type;
    result->data = new AEData;
    const auto *const bytes = static_cast<const unsigned char *>(data);
    result->data->bytes.assign(bytes, bytes + size);
    return noErr;
}

OSErr AEDisposeDesc(AEDesc *desc) {
    delete desc->data;
    desc->data = nullptr;
    desc->descriptorType = typeNull;
    return noErr;
}

OSErr AEDuplicateDesc(const AEDesc *desc, AEDesc *result) {
    *result = ae_copy(*desc);
    return noErr;
}

OSErr AECreateAppleEvent(OSType event_class, OSType event_id, const AEDesc *target, std::int16_t,
                         std::int32_t, AppleEvent *result) {
    result->data = nullptr;
    ae_make_record(result, event_class, event_id);
    result->data->target = ae_copy(*target);
    return noErr;
}

OSErr AECreateList(AEDescList *result) {
    return AECreateDesc(typeAEList, "", 0, result);
}

OSErr AEPutDesc(AEDescList *list, std::int32_t, const AEDesc *desc) {
    if (list->descriptorType != typeAEList)
        return errAECoercionFail;
    ae_append(list, 0, ae_copy(*desc));
    return noErr;
}

OSErr AECountItems(const AEDescList *list, std::int32_t *count) {
    *count = list->data ? static_cast<std::int32_t>(list->data->items.size()) : 0;
    return noErr;
}

static OSErr copy_bytes(const AEDesc &desc, OSType wanted, void *data, std::size_t room,
                        std::size_t *actual) {
    if (desc.descriptorType != wanted && wanted != typeWildCard)
        return errAECoercionFail;
    const std::vector<unsigned char> &bytes = desc.data->bytes;
    if (actual)
        *actual = bytes.size();
    const std::size_t size = bytes.size() < room ? bytes.size() : room;
    if (size > 0)
        std::memcpy(data, bytes.data(), size);
    return noErr;
}

OSErr AEGetDescData(const AEDesc *desc, void *data, std::size_t room) {
    return desc->data ? copy_bytes(*desc, typeWildCard, data, room, nullptr) : OSErr{paramErr};
}

OSErr AEGetNthPtr(const AEDescList *list, std::int32_t index, OSType wanted, void *data, std::size_t room,
                  std::size_t *actual) {
    if (!list->data || index < 1 || static_cast<std::size_t>(index) > list->data->items.size())
        return errAEDescNotFound;
    return copy_bytes(list->data->items[static_cast<std::size_t>(index) - 1].value, wanted, data, room,
                      actual);
}

static void put(AppleEvent *event, OSType keyword, AEDesc value) {
    for (AEItem &item : event->data->items)
        if (item.keyword == keyword) {
            AEDisposeDesc(&item.value);
            item.value = value;
            return;
        }
    ae_append(event, keyword, value);
}

OSErr AEPutParamPtr(AppleEvent *event, OSType keyword, OSType type, const void *data, std::size_t size) {
    if (!event->data)
        return paramErr;
    AEDesc value;
    AECreateDesc(type, data, size, &value);
    put(event, keyword, value);
    return noErr;
}

OSErr AEPutParamDesc(AppleEvent *event, OSType keyword, const AEDesc *desc) {
    if (!event->data)
        return paramErr;
    put(event, keyword, ae_copy(*desc));
    return noErr;
}

static const AEItem *find(const AppleEvent *event, OSType keyword) {
    if (event->data)
        for (const AEItem &item : event->data->items)
            if (item.keyword == keyword)
                return &item;
    return nullptr;
}

OSErr AEGetParamPtr(const AppleEvent *event, OSType keyword, OSType wanted, void *data, std::size_t room,
                    std::size_t *actual) {
    const AEItem *const item = find(event, keyword);
    if (!item)
        return errAEDescNotFound;
    item->known = true;
    return copy_bytes(item->value, wanted, data, room, actual);
}

OSErr AEGetParamDesc(const AppleEvent *event, OSType keyword, OSType wanted, AEDesc *result) {
    const AEItem *const item = find(event, keyword);
    if (!item)
        return errAEDescNotFound;
    item->known = true;
    if (wanted == typeAEList && item->value.descriptorType != typeAEList) {
        // A single value stands for a list of one.
        AECreateList(result);
        ae_append(result, 0, ae_copy(item->value));
        return noErr;
    }
    if (item->value.descriptorType != wanted && wanted != typeWildCard)
        return errAECoercionFail;
    *result = ae_copy(item->value);
    return noErr;
}

OSErr AEGetAttributePtr(const AppleEvent *event, OSType keyword, OSType, void *data, std::size_t room) {
    if (!event->data)
        return errAEDescNotFound;
    OSType value = 0;
    if (keyword == keyEventIDAttr) {
        value = event->data->event_id;
    } else if (keyword == keyMissedKeywordAttr) {
        for (const AEItem &item : event->data->items)
            if (!item.known && value == 0)
                value = item.keyword;
        if (value == 0)
            return errAEDescNotFound;
    } else {
        return errAEDescNotFound;
    }
    std::memcpy(data, &value, room < sizeof value ? room : sizeof value);
    return noErr;
}

} // namespace quillon
