#include "publisher/doors/rtsp_auth.h"

#include <string_view>

namespace quillo::publisher {

namespace {

struct auth
{
    GstRTSPAuth parent;
    std::shared_ptr<doors>* at;
    bool asks_for_password;
};

struct authClass
{
    GstRTSPAuthClass parent;
};

G_DEFINE_TYPE(auth, quillo_auth, GST_TYPE_RTSP_AUTH)

auth& ours(GstRTSPAuth* self) { return *reinterpret_cast<auth*>(self); }

GSocket* socket_of(GstRTSPContext const* of)
{
    return of->conn ? gst_rtsp_connection_get_read_socket(of->conn) : nullptr;
}

bool carries_password(GstRTSPContext const* request)
{
    gchar* value = nullptr;
    return request->request &&
           gst_rtsp_message_get_header(request->request, GST_RTSP_HDR_AUTHORIZATION, &value, 0) == GST_RTSP_OK;
}

gboolean authenticate(GstRTSPAuth* self, GstRTSPContext* request)
{
    gboolean const handled = GST_RTSP_AUTH_CLASS(quillo_auth_parent_class)->authenticate(self, request);
    if (carries_password(request)) {
        auto& at = **ours(self).at;
        request->token ? at.right_password(socket_of(request)) : at.wrong_password(socket_of(request));
    }
    return handled;
}

gboolean check(GstRTSPAuth* self, GstRTSPContext* request, gchar const* what)
{
    auto const parent = GST_RTSP_AUTH_CLASS(quillo_auth_parent_class)->check;
    std::string_view const question = what;
    auto& at = **ours(self).at;
    if (question == GST_RTSP_AUTH_CHECK_CONNECT)
        return socket_of(request) && at.admit(socket_of(request)) && parent(self, request, what);
    // Comes once with each request.
    if (question == GST_RTSP_AUTH_CHECK_URL && socket_of(request))
        at.heard(socket_of(request), request->method == GST_RTSP_PLAY);
    // Nobody has pictures sent to somebody else.
    if (question == GST_RTSP_AUTH_CHECK_TRANSPORT_CLIENT_SETTINGS)
        return FALSE;
    return !ours(self).asks_for_password || parent(self, request, what);
}

void finalize(GObject* self)
{
    delete ours(GST_RTSP_AUTH(self)).at;
    G_OBJECT_CLASS(quillo_auth_parent_class)->finalize(self);
}

void quillo_auth_class_init(authClass* of)
{
    of->parent.authenticate = authenticate;
    of->parent.check = check;
    G_OBJECT_CLASS(of)->finalize = finalize;
}

void quillo_auth_init(auth*) {}

} // namespace

object_ptr<GstRTSPAuth> make_rtsp_auth(std::shared_ptr<doors> at, rtsp_locks const& locks)
{
    auto* const made = static_cast<auth*>(g_object_new(quillo_auth_get_type(), nullptr));
    object_ptr<GstRTSPAuth> result{&made->parent};
    made->at = new std::shared_ptr<doors>{std::move(at)};
    made->asks_for_password = !locks.user.empty();
    gst_rtsp_auth_set_realm(result.get(), "Quillo Transmit");
    // Never basic: it would send the password itself.
    gst_rtsp_auth_set_supported_methods(result.get(), GST_RTSP_AUTH_DIGEST);
    if (made->asks_for_password) {
        std::unique_ptr<GstRTSPToken, releases<gst_rtsp_token_unref>> const token{
            gst_rtsp_token_new(GST_RTSP_TOKEN_MEDIA_FACTORY_ROLE, G_TYPE_STRING, viewer_role, nullptr)};
        gst_rtsp_auth_add_digest(result.get(), locks.user.c_str(), locks.password.c_str(), token.get());
    }
    if (locks.certificate)
        gst_rtsp_auth_set_tls_certificate(result.get(), locks.certificate.get());
    return result;
}

void open_to_viewers(GstRTSPMediaFactory* factory)
{
    gst_rtsp_media_factory_add_role(factory, viewer_role, GST_RTSP_PERM_MEDIA_FACTORY_ACCESS, G_TYPE_BOOLEAN, TRUE,
                                    GST_RTSP_PERM_MEDIA_FACTORY_CONSTRUCT, G_TYPE_BOOLEAN, TRUE, nullptr);
}

} // namespace quillo::publisher
