! The peer of formatted_write_krm.c: the same values, the same two shapes,
! the same unit, compiled by gfortran.
!
! Usage: formatted_write_gfortran ints|chars [n]
program formatted_write_gfortran
  implicit none
  integer, parameter :: pool_size = 1000, max_len = 16
  integer, allocatable :: a(:)
  character(len=max_len) :: pool(0:pool_size-1)
  integer :: plen(0:pool_size-1)
  integer :: n, i, j, p, status
  integer(8) :: x
  character(len=32) :: shape, arg

  call get_command_argument(1, shape)
  if (shape /= 'ints' .and. shape /= 'chars') then
    write (0, '(a)') 'usage: formatted_write_gfortran ints|chars [n]'
    error stop 2
  end if
  n = 10000000
  call get_command_argument(2, arg, status=status)
  if (status == 0 .and. len_trim(arg) > 0) read (arg, *) n
  if (n < 1) n = 1
  allocate (a(n))

  ! The generator of formatted_write_krm.c.
  x = 1
  do i = 1, n
    x = mod(x * 1103515245_8 + 12345_8, 2147483648_8)
    if (shape == 'ints') then
      a(i) = int((x - 1073741824_8) / ishft(1_8, 4 * mod(i, 8)))
    else
      a(i) = int(mod(x, int(pool_size, 8)))
    end if
  end do
  do j = 0, pool_size - 1
    plen(j) = 1 + mod(j, max_len)
    do p = 0, max_len - 1
      pool(j)(p+1:p+1) = achar(iachar('a') + mod(j + p, 26))
    end do
  end do

  if (shape == 'ints') then
    write (11, '(10I12)') (a(i), i = 1, n)
  else
    write (11, '(A)') (pool(a(i))(1:plen(a(i))), i = 1, n)
  end if
end program formatted_write_gfortran
