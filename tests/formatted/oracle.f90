! The expected records of the formatted-output cases, written by this
! compiler's own run-time library: for each case of the case file, a line
! "@@ name" and then whatever one WRITE statement with the case's format
! (a run-time format in a character variable) and items writes. A statement
! that fails adds the line "@@ name error <iostat>".
!
!   oracle CASES OUTPUT
!
! A case line is   name | format | items
! where items are separated by ";", each a type and a value:
!   i1 i2 i4 i8   an INTEGER of that many bytes
!   l1 l2 l4 l8   a LOGICAL of that many bytes: T or F
!   ch "text"     a CHARACTER value: what stands between the first and the
!                 last double quote
!   none          no items at all
! All items of a case have one type, or they alternate ch and i4, starting
! with ch. Lines that are empty or start with "#" are not cases.
program oracle
  implicit none
  integer, parameter :: max_items = 64, line_len = 4096
  character(len=line_len) :: line, cases_path, out_path
  character(len=line_len) :: name, fmt, rest
  character(len=line_len) :: tokens(max_items)
  character(len=line_len) :: texts(max_items)
  integer :: lengths(max_items)
  character(len=8) :: types(max_items)
  integer(8) :: values(max_items)
  integer(1) :: a1(max_items)
  integer(2) :: a2(max_items)
  integer(4) :: a4(max_items)
  integer(8) :: a8(max_items)
  logical(1) :: b1(max_items)
  logical(2) :: b2(max_items)
  logical(4) :: b4(max_items)
  logical(8) :: b8(max_items)
  integer :: cin, cout, ios, wios, n, i, p, q, lineno

  call get_command_argument(1, cases_path)
  call get_command_argument(2, out_path)
  open (newunit=cin, file=trim(cases_path), status='old', action='read')
  open (newunit=cout, file=trim(out_path), status='replace', action='write')

  lineno = 0
  do
    read (cin, '(A)', iostat=ios) line
    if (ios /= 0) exit
    lineno = lineno + 1
    if (len_trim(line) == 0) cycle
    if (line(1:1) == '#') cycle

    p = index(line, '|')
    if (p == 0) call bad('no "|"')
    name = adjustl(line(1:p-1))
    rest = line(p+1:)
    q = index(rest, '|')
    if (q == 0) call bad('no second "|"')
    fmt = adjustl(rest(1:q-1))
    rest = rest(q+1:)

    call split_items(rest, tokens, n)
    do i = 1, n
      call parse_item(tokens(i), types(i), values(i), texts(i), lengths(i))
    end do
    if (n == 1 .and. types(1) == 'none') n = 0

    write (cout, '(A,A)') '@@ ', trim(name)
    wios = 0
    if (n == 0) then
      write (cout, fmt, iostat=wios)
    else if (all(types(1:n) == types(1))) then
      select case (types(1))
      case ('i1')
        a1(1:n) = int(values(1:n), 1)
        write (cout, fmt, iostat=wios) (a1(i), i = 1, n)
      case ('i2')
        a2(1:n) = int(values(1:n), 2)
        write (cout, fmt, iostat=wios) (a2(i), i = 1, n)
      case ('i4')
        a4(1:n) = int(values(1:n), 4)
        write (cout, fmt, iostat=wios) (a4(i), i = 1, n)
      case ('i8')
        a8(1:n) = values(1:n)
        write (cout, fmt, iostat=wios) (a8(i), i = 1, n)
      case ('l1')
        b1(1:n) = values(1:n) /= 0
        write (cout, fmt, iostat=wios) (b1(i), i = 1, n)
      case ('l2')
        b2(1:n) = values(1:n) /= 0
        write (cout, fmt, iostat=wios) (b2(i), i = 1, n)
      case ('l4')
        b4(1:n) = values(1:n) /= 0
        write (cout, fmt, iostat=wios) (b4(i), i = 1, n)
      case ('l8')
        b8(1:n) = values(1:n) /= 0
        write (cout, fmt, iostat=wios) (b8(i), i = 1, n)
      case ('ch')
        write (cout, fmt, iostat=wios) (texts(i)(1:lengths(i)), i = 1, n)
      case default
        call bad('unknown item type')
      end select
    else
      ! Pairs of a character value and an INTEGER(4).
      if (mod(n, 2) /= 0) call bad('mixed items must come in pairs')
      do i = 1, n, 2
        if (types(i) /= 'ch' .or. types(i+1) /= 'i4') call bad('mixed items must be ch, i4 pairs')
        a4(i+1) = int(values(i+1), 4)
      end do
      write (cout, fmt, iostat=wios) (texts(i)(1:lengths(i)), a4(i+1), i = 1, n, 2)
    end if
    if (wios /= 0) then
      ! A failed statement may leave its record open.
      write (cout, '(/,A,A,A,I0)') '@@ ', trim(name), ' error ', wios
    end if
  end do
  close (cout)
  close (cin)

contains

  subroutine bad(why)
    character(len=*), intent(in) :: why
    write (0, '(A,I0,A,A)') 'oracle: line ', lineno, ': ', why
    error stop 2
  end subroutine bad

  ! Splits at ";" outside double quotes.
  subroutine split_items(text, out, count)
    character(len=*), intent(in) :: text
    character(len=*), intent(out) :: out(:)
    integer, intent(out) :: count
    integer :: k, start
    logical :: quoted
    count = 0
    start = 1
    quoted = .false.
    do k = 1, len_trim(text) + 1
      if (k <= len_trim(text)) then
        if (text(k:k) == '"') quoted = .not. quoted
        if (quoted .or. text(k:k) /= ';') cycle
      end if
      count = count + 1
      if (count > size(out)) call bad('too many items')
      out(count) = adjustl(text(start:k-1))
      start = k + 1
    end do
  end subroutine split_items

  subroutine parse_item(token, kind, value, text, length)
    character(len=*), intent(in) :: token
    character(len=*), intent(out) :: kind, text
    integer(8), intent(out) :: value
    integer, intent(out) :: length
    integer :: sp, first, last, rios
    character(len=line_len) :: arg
    value = 0
    text = ''
    length = 0
    sp = index(token, ' ')
    kind = token(1:sp-1)
    arg = adjustl(token(sp:))
    select case (kind)
    case ('none')
    case ('ch')
      first = index(token, '"')
      last = index(token, '"', back=.true.)
      if (first == 0 .or. last == first) call bad('a ch value needs two double quotes')
      text = token(first+1:last-1)
      length = last - first - 1
    case ('l1', 'l2', 'l4', 'l8')
      if (arg == 'T') then
        value = 1
      else if (arg == 'F') then
        value = 0
      else
        call bad('a logical value is T or F')
      end if
    case ('i1', 'i2', 'i4', 'i8')
      read (arg, *, iostat=rios) value
      if (rios /= 0) call bad('bad integer')
    case default
      call bad('unknown item type')
    end select
  end subroutine parse_item

end program oracle
