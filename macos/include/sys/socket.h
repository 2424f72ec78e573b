#pragma once

#include <sys/types.h>
#include <sys/uio.h>

typedef unsigned char sa_family_t;
typedef __uint32_t socklen_t;

struct sockaddr
{
    unsigned char sa_len;
    sa_family_t sa_family;
    char sa_data[14];
};

struct msghdr
{
    void* msg_name;
    socklen_t msg_namelen;
    struct iovec* msg_iov;
    int msg_iovlen;
    void* msg_control;
    socklen_t msg_controllen;
    int msg_flags;
};

struct cmsghdr
{
    socklen_t cmsg_len;
    int cmsg_level;
    int cmsg_type;
};

#define AF_UNIX 1
#define SOCK_STREAM 1
#define SOL_SOCKET 0xffff
#define SO_SNDBUF 0x1001
#define SO_RCVBUF 0x1002
#define SO_ERROR 0x1007
#define SO_NOSIGPIPE 0x1022
#define SCM_RIGHTS 0x01
#define SHUT_RD 0
#define SHUT_WR 1
#define SHUT_RDWR 2
#define MSG_PEEK 0x2
#define MSG_TRUNC 0x10
#define MSG_CTRUNC 0x20
#define MSG_DONTWAIT 0x80

// Control messages are aligned to four bytes.
#define __QUILLO_CMSG_ALIGN(n) (((size_t)(n) + 3) & ~(size_t)3)
#define CMSG_SPACE(n) (__QUILLO_CMSG_ALIGN(sizeof(struct cmsghdr)) + __QUILLO_CMSG_ALIGN(n))
#define CMSG_LEN(n) ((socklen_t)(__QUILLO_CMSG_ALIGN(sizeof(struct cmsghdr)) + (size_t)(n)))
#define CMSG_DATA(message) ((unsigned char*)(message) + __QUILLO_CMSG_ALIGN(sizeof(struct cmsghdr)))
#define CMSG_FIRSTHDR(head)                                                                                            \
    ((head)->msg_controllen >= sizeof(struct cmsghdr) ? (struct cmsghdr*)(head)->msg_control : (struct cmsghdr*)0)

__BEGIN_DECLS
int accept(int, struct sockaddr*, socklen_t*);
int bind(int, struct sockaddr const*, socklen_t);
int connect(int, struct sockaddr const*, socklen_t);
int getsockopt(int, int, int, void*, socklen_t*);
int listen(int, int);
ssize_t recv(int, void*, size_t, int);
ssize_t recvmsg(int, struct msghdr*, int);
ssize_t send(int, void const*, size_t, int);
ssize_t sendmsg(int, struct msghdr const*, int);
int setsockopt(int, int, int, void const*, socklen_t);
int shutdown(int, int);
int socket(int, int, int);
int socketpair(int, int, int, int*);
__END_DECLS
